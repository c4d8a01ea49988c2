// Runs the handle-read tests in a process where membarrier(2) fails, as on a
// kernel without it: readers must then fence for themselves. The filter goes in
// before the library decides which way to go, at the first pin.
#include <errno.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/membarrier.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>

#include "read_epochs.h"

namespace {

bool refuseMembarrier() {
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_membarrier, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog program{static_cast<unsigned short>(sizeof(filter) / sizeof(filter[0])), filter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 &&
           syscall(__NR_membarrier, MEMBARRIER_CMD_QUERY, 0, 0) == -1;
}

}  // namespace

int main(int argc, char** argv) {
    if (!refuseMembarrier()) {
        std::fprintf(stderr, "could not take membarrier away from this process\n");
        return 1;
    }
    ::testing::InitGoogleTest(&argc, argv);
    int result = RUN_ALL_TESTS();
    if (!read_epochs_state::readersFence.load()) {
        std::fprintf(stderr, "readers did not fall back to fencing for themselves\n");
        return 1;
    }
    return result;
}
