// What the explorer and a block's server say to each other over a local socket, without the
// heap on either side: the server forks its runs in between, and its memory must not change.
#pragma once

#include <cstddef>
#include <string>

namespace explore {

// Writes all of `size` bytes; false when the other end is gone.
bool writeAll(int fd, const void* data, size_t size);
// Two descriptors over a local socket, with `size` bytes of `data` (at most 64).
bool sendPair(int socket, const int fds[2], const void* data = nullptr, size_t size = 0);
// The two descriptors, and the bytes that came with them into `data`, which has room for
// `size`; false when the socket is closed or the message is not a pair.
bool receivePair(int socket, int fds[2], void* data = nullptr, size_t size = 0);
// Everything `fd` gives until its end, on the explorer's side (it takes heap memory).
std::string readAll(int fd);

}  // namespace explore
