// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace orvanta {

/// Reads one reply of HTTP/1.0 or 1.1 from the bytes of a connection, however they are cut, by the
/// parser of Boost.Beast. Interim replies (100, 102, 103) are skipped; what follows the reply is
/// ignored. Decides nothing about the connection and knows no clock.
class ReplyParser {
public:
    enum class Progress {
        unfinished, ///< more is needed; `finish` when no more comes
        complete,
        malformed, ///< not HTTP, or not in a form that has one meaning
        tooLarge,  ///< the body is larger than allowed, or announced to be
    };

    /// A body of more than `largestBody` bytes ends the reading. Nothing: bodies of any size are
    /// read and dropped.
    explicit ReplyParser(std::optional<qsizetype> largestBody);
    ~ReplyParser();
    ReplyParser(const ReplyParser&) = delete;
    ReplyParser& operator=(const ReplyParser&) = delete;

    /// The next bytes. After anything but `unfinished` further calls change nothing.
    Progress read(std::string_view bytes);
    /// The connection has ended in order. False when that leaves the reply incomplete.
    bool finish();

    /// Of a complete reply, as is the body.
    int status() const;
    QByteArray takeBody();

private:
    class Message;

    void beginMessage();
    Progress parse(std::string_view& bytes);
    static Progress progressOf(const Message& message);
    void keepUnparsed(std::string_view bytes);

    const std::optional<qsizetype> m_largestBody;
    std::unique_ptr<Message> m_message;
    QByteArray m_unparsed; ///< the beginning of a line whose rest has not come
    std::size_t m_headBytes = 0;
    Progress m_progress = Progress::unfinished;
};

} // namespace orvanta
