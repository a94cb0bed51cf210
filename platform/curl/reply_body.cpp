// SPDX-License-Identifier: MIT
#include "platform/curl/reply_body.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr qsizetype kMostAtOnce = 1024 * 1024;
constexpr qsizetype kLeastAtOnce = 64 * 1024;

} // namespace

bool ReplyBody::expect(qsizetype length) {
    if (length > m_largest) {
        return false;
    }
    try {
        if (m_isKept) {
            m_bytes.reserve(length + 1); // the end is read where one more byte could be
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// What is free, or as much again as is there.
qsizetype ReplyBody::room() const {
    const qsizetype used = m_bytes.size();
    const qsizetype free = m_bytes.capacity() - used;
    return std::min(free > 0 ? free : std::max(used, kLeastAtOnce), kMostAtOnce);
}

ReplyBody::Progress ReplyBody::readFrom(int descriptor) {
    try {
        return readInto(descriptor, room());
    } catch (const std::bad_alloc&) {
        return Progress::TooLarge;
    }
}

ReplyBody::Progress ReplyBody::readInto(int descriptor, qsizetype count) {
    const qsizetype used = m_bytes.size();
    m_bytes.resize(used + count);
    const ssize_t result = ::read(descriptor, m_bytes.data() + used, count);
    const bool isNothing = result < 0 && (errno == EAGAIN || errno == EINTR);
    const qsizetype read = std::max<qsizetype>(result, 0);
    m_bytes.resize(m_isKept ? used + read : 0);
    m_size += read;
    if (m_size > m_largest) {
        return Progress::TooLarge;
    }
    if (read > 0) {
        return Progress::Read;
    }
    return isNothing ? Progress::NothingThere : Progress::Ended;
}

} // namespace orvanta
