// SPDX-License-Identifier: MIT
#include "platform/beast/reply_parser.h"

#include <boost/beast/http/parser.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

namespace orvanta {
namespace {

namespace http = boost::beast::http;
using boost::beast::error_code;

/// Of the head of a reply; connectors send some hundreds of bytes.
constexpr std::uint32_t kMostHeadBytes = 256 * 1024;
constexpr std::string_view kBeginning = "HTTP/1.";

/// A body that is kept in one piece, or dropped as it comes.
struct KeptOrDropped {
    struct value_type { // NOLINT(readability-identifier-naming)
        bool isKept = true;
        QByteArray bytes;
    };

    class reader { // NOLINT(readability-identifier-naming)
    public:
        template <bool isRequest, class Fields>
        reader(http::header<isRequest, Fields>&, value_type& body) : m_body(body) {}

        void init(const boost::optional<std::uint64_t>& length, error_code& error) {
            // Growing by doubling would copy a large body several times.
            if (m_body.isKept && length) {
                guarded(error, [&] { m_body.bytes.reserve(static_cast<qsizetype>(*length)); });
            }
        }

        std::size_t put(boost::asio::const_buffer piece, error_code& error) {
            if (m_body.isKept) {
                guarded(error, [&] {
                    m_body.bytes.append(static_cast<const char*>(piece.data()),
                                        static_cast<qsizetype>(piece.size()));
                });
            }
            return piece.size();
        }

        void finish(error_code&) {}

    private:
        template <class Step>
        static void guarded(error_code& error, const Step& step) {
            try {
                step();
            } catch (const std::bad_alloc&) {
                error = http::error::body_limit;
            }
        }

        value_type& m_body;
    };
};

bool canBeginReply(std::string_view bytes) {
    const auto length = std::min(bytes.size(), kBeginning.size());
    return bytes.substr(0, length) == kBeginning.substr(0, length);
}

} // namespace

class ReplyParser::Message : public http::response_parser<KeptOrDropped> {
public:
    explicit Message(std::optional<qsizetype> largestBody) {
        eager(true);
        header_limit(kMostHeadBytes);
        // With none at all, this parser takes no announced body.
        body_limit(largestBody ? static_cast<std::uint64_t>(*largestBody)
                               : std::numeric_limits<std::uint64_t>::max());
        get().body().isKept = largestBody.has_value();
    }
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
    QByteArray joined;
    if (!m_unparsed.isEmpty()) {
        joined = std::exchange(m_unparsed, {});
        joined.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
        bytes = {joined.constData(), static_cast<std::size_t>(joined.size())};
    }
    m_progress = parse(bytes);
    if (m_progress == Progress::unfinished) {
        m_unparsed = QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
    return m_progress;
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
    constexpr unsigned kLeast = 100;
    constexpr unsigned kSwitchingProtocols = 101;
    constexpr unsigned kLeastFinal = 200;
    if (!message.is_header_done()) {
        return Progress::unfinished;
    }
    const unsigned status = message.get().result_int();
    if (status < kLeast || status == kSwitchingProtocols) {
        return Progress::malformed;
    }
    return message.is_done() && status >= kLeastFinal ? Progress::complete : Progress::unfinished;
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
    return static_cast<int>(m_message->get().result_int());
}

QByteArray ReplyParser::takeBody() {
    return std::move(m_message->get().body().bytes);
}

} // namespace orvanta
