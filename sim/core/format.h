// Canonical transcript forms of values (integers in decimal, shortest
// round-trip doubles and floats, quoted strings, hex bytes, records, objects).
#pragma once

#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/types.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <android/hardware/gnss/2.0/types.h>
#include <hidl/HidlSupport.h>
#include <vendor/zendra/hardware/fusd/1.2/types.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "objects.h"
#include "record_fields.h"  // appendFields() for every HIDL record, generated from hidl-gen's headers

namespace sim {

std::string fmt(bool v);
std::string fmt(int8_t v);
std::string fmt(uint8_t v);
std::string fmt(int16_t v);
std::string fmt(uint16_t v);
std::string fmt(int32_t v);
std::string fmt(uint32_t v);
std::string fmt(int64_t v);
std::string fmt(uint64_t v);
std::string fmt(long long v);
std::string fmt(unsigned long long v);
std::string fmt(float v);
std::string fmt(double v);
std::string fmt(const char* v);  // quoted with escapes; nullptr prints null
std::string fmt(const std::string& v);
std::string fmt(const android::hardware::hidl_string& v);
std::string fmtBytes(const uint8_t* data, size_t size);  // hex:... ; hex: when empty
std::string fmt(const android::hardware::hidl_vec<uint8_t>& v);

std::string fmt(const android::hardware::gnss::V1_0::GnssLocation& v);
std::string fmt(const android::hardware::gnss::V2_0::GnssLocation& v);
std::string fmt(const android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus& v);
std::string fmt(
    const android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>& v);
std::string fmt(const std::vector<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>& v);
std::string fmt(const vendor::zendra::hardware::fusd::V1_2::GeofenceRequest& v);  // its 72 bytes
std::string fmt(
    const android::hardware::hidl_vec<vendor::zendra::hardware::fusd::V1_2::GeofenceResult>& v);

// Constellations and satellite flags as the satellite entries show them: by name,
// a number where there is none ("GPS", "8"; "USED|CARRIER", "-", "EPH|16").
std::string fmtConstellation(uint8_t v);
std::string fmtSvFlags(uint8_t v);

// The templates below call one another and the record printer; declaring them first
// makes every one visible wherever a list or record holds another kind of value.
template <typename T, size_t N>
std::string fmt(const android::hardware::hidl_array<T, N>& v);
template <typename T>
std::string fmt(const android::hardware::hidl_vec<T>& v);
template <typename T>
auto fmt(const T& v)
    -> decltype(appendFields(std::declval<std::vector<std::string>&>(), std::string(), v),
                std::string());

// Enumerations print as their integer value.
template <typename E, typename = std::enable_if_t<std::is_enum<E>::value>>
std::string fmt(E v) {
    return fmt(static_cast<std::underlying_type_t<E>>(v));
}

// Objects print by name.
template <typename T>
std::string fmt(const android::sp<T>& v) {
    return ObjectNames::get().nameOf(v);
}

// Any other list: [a b c].
template <typename T>
std::string fmt(const android::hardware::hidl_vec<T>& v) {
    std::string out = "[";
    for (size_t i = 0; i < v.size(); ++i) out += (i ? " " : "") + fmt(v[i]);
    return out + "]";
}

// A fixed-size array prints as a list.
template <typename T, size_t N>
std::string fmt(const android::hardware::hidl_array<T, N>& v) {
    std::string out = "[";
    for (size_t i = 0; i < N; ++i) out += (i ? " " : "") + fmt(v[i]);
    return out + "]";
}

// Any other HIDL record: {name=value ...}, nested fields as outer.inner=value.
// Overloads for every generated struct come from the generated record printers.
template <typename T>
auto fmt(const T& v)
    -> decltype(appendFields(std::declval<std::vector<std::string>&>(), std::string(), v),
                std::string()) {
    std::vector<std::string> fields;
    appendFields(fields, std::string(), v);
    std::string out = "{";
    for (size_t i = 0; i < fields.size(); ++i) out += (i ? " " : "") + fields[i];
    return out + "}";
}

namespace detail {
template <typename T>
auto appendField(std::vector<std::string>& out, const std::string& name, const T& v, int)
    -> decltype(appendFields(out, name, v), void()) {
    appendFields(out, name + ".", v);
}
template <typename T>
void appendField(std::vector<std::string>& out, const std::string& name, const T& v, long) {
    out.push_back(name + "=" + fmt(v));
}
}  // namespace detail

// One field of a record, as the generated record printers push it: "name=value", or
// a nested record spread out as "name.inner=value ...".
template <typename T>
void appendField(std::vector<std::string>& out, const std::string& name, const T& v) {
    detail::appendField(out, name, v, 0);
}

}  // namespace sim
