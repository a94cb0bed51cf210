// SPDX-License-Identifier: MIT
#include "platform/beast/reply_parser.h"

#include <boost/beast/http/basic_parser.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

namespace orvanta {
namespace {

namespace http = boost::beast::http;
using boost::beast::error_code;
using boost::beast::string_view;

/// Of the heads of a reply, and of each line and all trailers behind them; connectors send some
/// hundreds of bytes.
constexpr std::uint32_t kMostHeadBytes = 256 * 1024;
constexpr std::string_view kBeginning = "HTTP/1.";

bool canBeginReply(std::string_view bytes) {
    const auto length = std::min(bytes.size(), kBeginning.size());
    return bytes.substr(0, length) == kBeginning.substr(0, length);
}

} // namespace

/// What the parser finds. Fields are not kept: those that say where the body ends are its own.
class ReplyParser::Message : public http::basic_parser<false> {
public:
    explicit Message(std::optional<qsizetype> largestBody) : m_largestBody(largestBody) {
        eager(true);
        header_limit(kMostHeadBytes);
        // With none at all, this parser takes no announced body. It overlooks the limit when bytes
        // of the body come along with the head, so `keep` looks again.
        body_limit(largestBody ? static_cast<std::uint64_t>(*largestBody)
                               : std::numeric_limits<std::uint64_t>::max());
    }

    int status = 0;
    QByteArray body;

private:
    void on_request_impl(http::verb, string_view, string_view, int, error_code&) override {}
    void on_response_impl(int code, string_view, int, error_code&) override { status = code; }
    void on_field_impl(http::field, string_view, string_view, error_code&) override {}
    void on_header_impl(error_code&) override {}
    void on_chunk_header_impl(std::uint64_t, string_view, error_code&) override {}
    void on_finish_impl(error_code&) override {}

    void on_body_init_impl(const boost::optional<std::uint64_t>& length,
                           error_code& error) override {
        // Growing by doubling would copy a large body several times.
        keep(length.value_or(0), error,
             [&] { body.reserve(static_cast<qsizetype>(length.value_or(0))); });
    }
    std::size_t on_body_impl(string_view piece, error_code& error) override {
        keep(static_cast<std::size_t>(body.size()) + piece.size(), error,
             [&] { body.append(piece.data(), static_cast<qsizetype>(piece.size())); });
        return piece.size();
    }
    std::size_t on_chunk_body_impl(std::uint64_t, string_view piece, error_code& error) override {
        return on_body_impl(piece, error);
    }

    /// Takes `step`, to a body of `size`, unless bodies are dropped.
    template <class Step>
    void keep(std::uint64_t size, error_code& error, const Step& step) const {
        if (!m_largestBody) {
            return;
        }
        if (size > static_cast<std::uint64_t>(*m_largestBody)) {
            error = http::error::body_limit;
            return;
        }
        try {
            step();
        } catch (const std::bad_alloc&) {
            error = http::error::body_limit;
        }
    }

    const std::optional<qsizetype> m_largestBody;
};

ReplyParser::ReplyParser(std::optional<qsizetype> largestBody) : m_largestBody(largestBody) {
    beginMessage();
}

ReplyParser::~ReplyParser() = default;

void ReplyParser::beginMessage() {
    m_message = std::make_unique<Message>(m_largestBody);
}

ReplyParser::Progress ReplyParser::read(std::string_view bytes) {
    if (m_progress != Progress::unfinished) {
        return m_progress;
    }
    m_headBytes += m_message->is_header_done() ? 0 : bytes.size();
    QByteArray joined;
    if (!m_unparsed.isEmpty()) {
        joined = std::exchange(m_unparsed, {});
        joined.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
        bytes = {joined.constData(), static_cast<std::size_t>(joined.size())};
    }
    m_progress = parse(bytes);
    if (m_progress == Progress::unfinished) {
        keepUnparsed(bytes);
    }
    return m_progress;
}

/// The parser itself knows no limit for heads of many short lines, nor for trailers.
void ReplyParser::keepUnparsed(std::string_view bytes) {
    const bool isEndlessHead = !m_message->is_header_done() && m_headBytes > kMostHeadBytes;
    if (isEndlessHead || bytes.size() > kMostHeadBytes) {
        m_progress = Progress::malformed;
    } else {
        m_unparsed = QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
}

/// Takes what it has parsed from `bytes`.
ReplyParser::Progress ReplyParser::parse(std::string_view& bytes) {
    while (!bytes.empty()) {
        // Whoever speaks another protocol may never end a line.
        if (!m_message->got_some() && !canBeginReply(bytes)) {
            return Progress::malformed;
        }
        error_code error;
        bytes.remove_prefix(
            m_message->put(boost::asio::const_buffer(bytes.data(), bytes.size()), error));
        if (error == http::error::need_more) {
            return Progress::unfinished;
        }
        if (error) {
            return error == http::error::body_limit ? Progress::tooLarge : Progress::malformed;
        }
        if (const Progress progress = progressOf(*m_message); progress != Progress::unfinished) {
            return progress;
        }
        if (m_message->is_done()) {
            beginMessage();
        }
    }
    return Progress::unfinished;
}

/// Unfinished, too, when it was an interim reply that has been read.
ReplyParser::Progress ReplyParser::progressOf(const Message& message) {
    constexpr int kLeast = 100;
    constexpr int kSwitchingProtocols = 101;
    constexpr int kLeastFinal = 200;
    if (!message.is_header_done()) {
        return Progress::unfinished;
    }
    if (message.status < kLeast || message.status == kSwitchingProtocols) {
        return Progress::malformed;
    }
    return message.is_done() && message.status >= kLeastFinal ? Progress::complete
                                                              : Progress::unfinished;
}

bool ReplyParser::finish() {
    if (m_progress == Progress::unfinished && m_unparsed.isEmpty() && m_message->is_header_done()) {
        error_code error;
        m_message->put_eof(error);
        m_progress = error ? Progress::malformed : Progress::complete;
    }
    return m_progress == Progress::complete;
}

int ReplyParser::status() const {
    return m_message->status;
}

QByteArray ReplyParser::takeBody() {
    return std::move(m_message->body);
}

} // namespace orvanta
