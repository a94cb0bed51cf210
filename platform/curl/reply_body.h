// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace orvanta {

/// Reads the body of a reply from a pipe, straight to where it stays.
class ReplyBody {
public:
    enum class Progress { Read, NothingThere, Ended, TooLarge };

    /// `largest` in bytes. Of a body that is not `isKept` the bytes are only counted.
    ReplyBody(qsizetype largest, bool isKept) : m_largest(largest), m_isKept(isKept) {}

    qsizetype largest() const { return m_largest; }

    /// `length` bytes are said to come; makes room for them, as growing would copy a large body
    /// several times. False when they are too many, for this body or for the memory.
    bool expect(qsizetype length);

    /// Reads once, 1 MiB at most. What is more than there is memory for counts as too large. A pipe
    /// that cannot be read any more has ended.
    Progress readFrom(int descriptor);

    QByteArray take() { return std::move(m_bytes); }

private:
    qsizetype room() const;
    Progress readInto(int descriptor, qsizetype count);

    const qsizetype m_largest;
    const bool m_isKept;
    qsizetype m_size = 0;
    QByteArray m_bytes;
};

} // namespace orvanta
