// Return<T> checking: a failed Return that the library leaves unchecked must abort (and an
// unchecked success must be logged under the error restriction), because that is how the
// scenarios and the fault sweep see a library that ignores a failed call. Operations the
// library relies on to check a Return are exercised by every scenario already.
#include <android/log.h>
#include <gtest/gtest.h>
#include <hidl/Status.h>

#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::android::hardware::HidlReturnRestriction;
using ::android::hardware::Return;
using ::android::hardware::setProcessHidlReturnRestriction;
using ::android::hardware::Status;
using ::android::hardware::Void;

// Text of the abort on an unchecked failure, and of the line an unchecked success logs.
constexpr const char* kFailedUnchecked = "Failed HIDL return status not checked";
constexpr const char* kUnchecked = "Unchecked HIDL return status";

Status deadPeer() {
    return Status::fromStatusT(::android::DEAD_OBJECT);
}
Status failedTransaction() {
    return Status::fromStatusT(::android::FAILED_TRANSACTION);
}
Status illegalArgument() {
    return Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "bad");
}

// Runs `body` in a death-test child that must end normally; an abort inside it fails
// only this test.
#define EXPECT_SURVIVES(body) \
    EXPECT_EXIT(              \
        {                     \
            body;             \
            std::exit(0);     \
        },                    \
        ::testing::ExitedWithCode(0), "")

class ReturnCheckTest : public ::testing::Test {
  protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    void TearDown() override { setProcessHidlReturnRestriction(HidlReturnRestriction::NONE); }
};

TEST_F(ReturnCheckTest, FailedReturnDestroyedUncheckedAborts) {
    EXPECT_DEATH({ Return<int> r(deadPeer()); }, kFailedUnchecked);
    EXPECT_DEATH({ Return<void> r(failedTransaction()); }, kFailedUnchecked);
}

TEST_F(ReturnCheckTest, ReadingTheValueOfAFailedReturnAborts) {
    EXPECT_DEATH(
        {
            Return<int> r(deadPeer());
            int value = r;
            (void)value;
        },
        kFailedUnchecked);
    // Having checked the status does not make the value readable.
    EXPECT_DEATH(
        {
            Return<bool> r(deadPeer());
            (void)r.isOk();
            bool value = r;
            (void)value;
        },
        kFailedUnchecked);
}

// A move hands the obligation on, and assigning over an unchecked failure is no check.
TEST_F(ReturnCheckTest, MovingCarriesTheObligationToCheck) {
    EXPECT_DEATH(
        {
            Return<int> source(deadPeer());
            Return<int> target(std::move(source));
        },
        kFailedUnchecked);
    EXPECT_DEATH(
        {
            Return<int> target(1);
            (void)target.isOk();
            target = Return<int>(deadPeer());
        },
        kFailedUnchecked);
    EXPECT_DEATH(
        {
            Return<void> r(illegalArgument());
            r = Void();
        },
        kFailedUnchecked);
}

// liblog sink that keeps every line written while a test runs.
struct LogLine {
    int priority;
    std::string message;
};
std::mutex gLogLock;
std::vector<LogLine> gLogLines;

void captureLog(const struct __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(gLogLock);
    gLogLines.push_back({data->priority, message});
}

class ReturnRestrictionLogTest : public ::testing::Test {
  protected:
    void SetUp() override {
        gLogLines.clear();
        __android_log_set_logger(captureLog);
    }
    void TearDown() override {
        __android_log_set_logger(__android_log_stderr_logger);
        setProcessHidlReturnRestriction(HidlReturnRestriction::NONE);
    }
    std::vector<LogLine> lines() {
        std::lock_guard<std::mutex> lock(gLogLock);
        return gLogLines;
    }
};

TEST_F(ReturnRestrictionLogTest, ErrorRestrictionLogsEachUncheckedSuccess) {
    setProcessHidlReturnRestriction(HidlReturnRestriction::ERROR_IF_UNCHECKED);
    { Return<void> unchecked = Void(); }
    { Return<bool> unchecked(true); }
    {
        Return<int> checked(3);
        (void)checked.isOk();
    }
    std::vector<LogLine> logged = lines();
    ASSERT_EQ(logged.size(), 2u);
    for (const auto& line : logged) {
        EXPECT_EQ(line.priority, ANDROID_LOG_ERROR);
        EXPECT_NE(line.message.find(kUnchecked), std::string::npos) << line.message;
    }
}

}  // namespace
