// Prints, for each way provider/, hal/ and generated code may use the HIDL
// runtime, whether the runtime's headers accept it: "1 <form>" or "0 <form>".
// Built once against the host runtime and once against each release's libhidl,
// the outputs show any form the host accepts that a device would reject.
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

namespace hw = ::android::hardware;

using Recipient = hw::hidl_death_recipient;
using IntArray = hw::hidl_array<int, 2>;
template <typename T>
T& lvalue();
template <typename T>
const T& cref();

// F(name, type the form is tried on (X), expression using X)
#define HIDL_API_FORMS(F)                                                                          \
    F(return_value_from_value, hw::Return<int>, X(1))                                              \
    F(return_value_from_status, hw::Return<int>, X(cref<hw::Status>()))                            \
    F(return_value_copy, hw::Return<int>, X(cref<X>()))                                            \
    F(return_value_copy_assign, hw::Return<int>, lvalue<X>() = cref<X>())                          \
    F(return_value_move_assign, hw::Return<int>, lvalue<X>() = std::declval<X>())                  \
    F(return_value_read_const, hw::Return<int>, static_cast<int>(cref<X>()))                       \
    F(return_value_withDefault, hw::Return<int>, lvalue<X>().withDefault(0))                       \
    F(return_value_withDefault_rvalue, hw::Return<int>, std::declval<X>().withDefault(0))          \
    F(return_value_withDefault_const, hw::Return<int>, cref<X>().withDefault(0))                   \
    F(return_isOk_const, hw::Return<int>, cref<X>().isOk())                                        \
    F(return_isOkUnchecked_const, hw::Return<int>, cref<X>().isOkUnchecked())                      \
    F(return_isDeadObject_const, hw::Return<int>, cref<X>().isDeadObject())                        \
    F(return_description_const, hw::Return<int>, cref<X>().description())                          \
    F(return_sp_from_sp, hw::Return<android::sp<Recipient>>, X(cref<android::sp<Recipient>>()))    \
    F(return_sp_from_pointer, hw::Return<android::sp<Recipient>>, X(lvalue<Recipient*>()))         \
    F(return_sp_from_status, hw::Return<android::sp<Recipient>>, X(cref<hw::Status>()))            \
    F(return_sp_copy, hw::Return<android::sp<Recipient>>, X(cref<X>()))                            \
    F(return_sp_read_const, hw::Return<android::sp<Recipient>>,                                    \
      static_cast<android::sp<Recipient>>(cref<X>()))                                              \
    F(return_sp_withDefault, hw::Return<android::sp<Recipient>>, lvalue<X>().withDefault(nullptr)) \
    F(return_sp_withDefault_const, hw::Return<android::sp<Recipient>>,                             \
      cref<X>().withDefault(nullptr))                                                              \
    F(return_void_default, hw::Return<void>, X())                                                  \
    F(return_void_from_status, hw::Return<void>, X(cref<hw::Status>()))                            \
    F(return_void_copy, hw::Return<void>, X(cref<X>()))                                            \
    F(return_void_from_Void, hw::Return<void>, X(hw::Void()))                                      \
    F(status_ok, hw::Status, X::ok())                                                              \
    F(status_fromExceptionCode, hw::Status, X::fromExceptionCode(X::EX_ILLEGAL_STATE))             \
    F(status_fromExceptionCode_message, hw::Status, X::fromExceptionCode(X::EX_ILLEGAL_STATE, "")) \
    F(status_fromStatusT, hw::Status, X::fromStatusT(android::DEAD_OBJECT))                        \
    F(status_queries_const, hw::Status,                                                            \
      (cref<X>().isOk(), cref<X>().exceptionCode(), cref<X>().transactionError()))                 \
    F(status_description_const, hw::Status, cref<X>().description())                               \
    F(string_from_c_string, hw::hidl_string, X(""))                                                \
    F(string_from_c_string_length, hw::hidl_string, X("", std::size_t{0}))                         \
    F(string_from_std_string, hw::hidl_string, X(cref<std::string>()))                             \
    F(string_assign_c_string, hw::hidl_string, lvalue<X>() = "")                                   \
    F(string_assign_std_string, hw::hidl_string, lvalue<X>() = cref<std::string>())                \
    F(string_read_const, hw::hidl_string,                                                          \
      (cref<X>().c_str(), cref<X>().size(), cref<X>().empty()))                                    \
    F(string_to_std_string, hw::hidl_string, static_cast<std::string>(cref<X>()))                  \
    F(string_setToExternal, hw::hidl_string, lvalue<X>().setToExternal("", 0))                     \
    F(string_clear, hw::hidl_string, lvalue<X>().clear())                                          \
    F(string_compare, hw::hidl_string,                                                             \
      (cref<X>() == cref<X>(), cref<X>() != cref<X>(), cref<X>() < cref<X>(), cref<X>() == "",     \
       "" == cref<X>(), cref<X>() != "", "" != cref<X>()))                                         \
    F(vec_from_size, hw::hidl_vec<int>, X(std::size_t{1}))                                         \
    F(vec_from_list, hw::hidl_vec<int>, X({1, 2}))                                                 \
    F(vec_from_std_vector, hw::hidl_vec<int>, X(cref<std::vector<int>>()))                         \
    F(vec_from_range, hw::hidl_vec<int>,                                                           \
      X(cref<std::vector<int>>().begin(), cref<std::vector<int>>().end()))                         \
    F(vec_assign_std_vector, hw::hidl_vec<int>, lvalue<X>() = cref<std::vector<int>>())            \
    F(vec_to_std_vector, hw::hidl_vec<int>, static_cast<std::vector<int>>(cref<X>()))              \
    F(vec_read_const, hw::hidl_vec<int>,                                                           \
      (cref<X>().size(), cref<X>().data(), cref<X>()[0], cref<X>().begin(), cref<X>().end()))      \
    F(vec_write, hw::hidl_vec<int>,                                                                \
      (lvalue<X>().data(), lvalue<X>()[0] = 1, lvalue<X>().begin(), lvalue<X>().end()))            \
    F(vec_resize, hw::hidl_vec<int>, lvalue<X>().resize(1))                                        \
    F(vec_setToExternal, hw::hidl_vec<int>, lvalue<X>().setToExternal(nullptr, 0))                 \
    F(vec_setToExternal_owned, hw::hidl_vec<int>, lvalue<X>().setToExternal(nullptr, 0, true))     \
    F(vec_releaseData, hw::hidl_vec<int>, lvalue<X>().releaseData())                               \
    F(vec_compare, hw::hidl_vec<int>, (cref<X>() == cref<X>(), cref<X>() != cref<X>()))            \
    F(array_from_c_array, IntArray, X(cref<int[2]>()))                                             \
    F(array_read_const, IntArray,                                                                  \
      (cref<X>().data(), cref<X>()[0], X::size(), cref<X>() == cref<X>()))                         \
    F(array_iterate, IntArray, (lvalue<X>().begin(), lvalue<X>().end()))                           \
    F(handle_from_native, hw::hidl_handle, X(lvalue<const native_handle_t*>()))                    \
    F(handle_read_const, hw::hidl_handle,                                                          \
      (cref<X>().getNativeHandle(), static_cast<const native_handle_t*>(cref<X>())))               \
    F(toString_scalars, int,                                                                       \
      (hw::toString(true), hw::toString(int8_t{0}), hw::toString(uint8_t{0}),                      \
       hw::toString(int16_t{0}), hw::toString(uint16_t{0}), hw::toString(X{0}),                    \
       hw::toString(uint32_t{0}), hw::toString(int64_t{0}), hw::toString(uint64_t{0}),             \
       hw::toString(0.0f), hw::toString(0.0)))                                                     \
    F(toString_hidl_types, int,                                                                    \
      (hw::toString(cref<hw::hidl_string>()), hw::toString(cref<hw::hidl_handle>()),               \
       hw::toString(cref<hw::hidl_vec<X>>()), hw::toString(cref<IntArray>()),                      \
       hw::toString(cref<android::sp<Recipient>>())))                                              \
    F(toString_pointer, int, hw::toString(lvalue<const X*>()))

#define DEFINE_FORM(name, type, ...)       \
    template <typename X, typename = void> \
    struct name : std::false_type {};      \
    template <typename X>                  \
    struct name<X, std::void_t<decltype(__VA_ARGS__)>> : std::true_type {};
HIDL_API_FORMS(DEFINE_FORM)

}  // namespace

int main() {
#define PRINT_FORM(name, type, ...) std::printf("%d %s\n", name<type>::value ? 1 : 0, #name);
    HIDL_API_FORMS(PRINT_FORM)
    return 0;
}
