#include "line_channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace explore {

namespace {

// A message of a few bytes with room for two descriptors.
struct PairMessage {
    char bytes[64] = {'r'};
    iovec data{bytes, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(2 * sizeof(int))] = {};
    msghdr message{};

    PairMessage() {
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
    }
    PairMessage(const PairMessage&) = delete;
    PairMessage& operator=(const PairMessage&) = delete;
};

}  // namespace

bool writeAll(int fd, const void* data, size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(fd, at, size);
        if (written <= 0) return false;
        at += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool sendPair(int socket, const int fds[2], const void* data, size_t size) {
    PairMessage m;
    if (size > sizeof(m.bytes)) return false;
    if (size > 0) {
        memcpy(m.bytes, data, size);
        m.data.iov_len = size;
    }
    cmsghdr* header = CMSG_FIRSTHDR(&m.message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(2 * sizeof(int));
    memcpy(CMSG_DATA(header), fds, 2 * sizeof(int));
    return sendmsg(socket, &m.message, MSG_NOSIGNAL) == static_cast<ssize_t>(m.data.iov_len);
}

bool receivePair(int socket, int fds[2], void* data, size_t size) {
    PairMessage m;
    m.data.iov_len = size > 0 ? size : 1;
    if (size > sizeof(m.bytes) ||
        recvmsg(socket, &m.message, MSG_WAITALL) != static_cast<ssize_t>(m.data.iov_len)) {
        return false;
    }
    if (size > 0) memcpy(data, m.bytes, size);
    cmsghdr* header = CMSG_FIRSTHDR(&m.message);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS) return false;
    memcpy(fds, CMSG_DATA(header), 2 * sizeof(int));
    return true;
}

std::string readAll(int fd) {
    std::string text;
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(fd, buffer, sizeof(buffer));
        if (got <= 0) break;
        text.append(buffer, static_cast<size_t>(got));
    }
    return text;
}

}  // namespace explore
