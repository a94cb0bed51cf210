// SPDX-License-Identifier: MIT
#include "platform/curl/curl_account.h"

#include <utility>

namespace orvanta {
namespace {

constexpr qsizetype kLongest = 1024 * 1024;

constexpr int kSwitchingProtocols = 101;
constexpr int kNoContent = 204;
constexpr int kNotModified = 304;

/// More is to follow it. Nobody asks for another protocol here, so after 101 nothing does.
bool isInterim(int status) {
    return status / 100 == 1 && status != kSwitchingProtocols;
}

/// "text/html" of "content-type: text/html" for "content-type:"; nothing for another field.
std::optional<QByteArray> valueOf(QByteArrayView field, QByteArrayView name) {
    if (field.size() < name.size() ||
        field.first(name.size()).compare(name, Qt::CaseInsensitive) != 0) {
        return std::nullopt;
    }
    return field.sliced(name.size()).trimmed().toByteArray();
}

QString textAfter(QByteArrayView name, QByteArrayView line) {
    return line.startsWith(name) ? QString::fromUtf8(line.sliced(name.size())) : QString();
}

} // namespace

bool CurlAccount::take(QByteArrayView piece) {
    m_size += piece.size();
    if (m_size > kLongest) {
        return false;
    }
    qsizetype end = piece.indexOf('\n');
    while (end >= 0) {
        m_line += piece.first(end);
        takeLine(m_line.endsWith('\r') ? QByteArrayView(m_line).chopped(1) : m_line);
        m_lineBefore = std::exchange(m_lastLine, std::exchange(m_line, QByteArray()));
        piece = piece.sliced(end + 1);
        end = piece.indexOf('\n');
    }
    m_line += piece;
    return true;
}

void CurlAccount::takeLine(QByteArrayView line) {
    if (m_state == State::AfterHead) {
        return;
    }
    if (line.startsWith("HTTP/")) {
        beginHead(line);
    } else if (m_state == State::InHead && line.isEmpty()) {
        endHead();
    } else if (m_state == State::InHead) {
        takeField(line);
    }
}

void CurlAccount::beginHead(QByteArrayView statusLine) {
    // curl has made sure that this is a number.
    m_status = statusLine.toByteArray().simplified().split(' ').value(1).toInt();
    m_length.reset();
    m_hasLocation = false;
    m_state = State::InHead;
}

void CurlAccount::takeField(QByteArrayView field) {
    if (const auto length = valueOf(field, "content-length:")) {
        bool isNumber = false;
        const qlonglong bytes = length->toLongLong(&isNumber);
        m_length = isNumber && bytes >= 0 ? std::optional<qsizetype>(bytes) : std::nullopt;
    } else if (const auto location = valueOf(field, "location:")) {
        m_hasLocation = !location->isEmpty();
    }
}

void CurlAccount::endHead() {
    m_state = isInterim(m_status) ? State::BeforeHead : State::AfterHead;
}

std::optional<qsizetype> CurlAccount::announcedLength() const {
    // Where no body follows, the length is that of another reply.
    return m_status == kNoContent || m_status == kNotModified ? std::nullopt : m_length;
}

bool CurlAccount::isRedirect() const {
    const bool leadsOn =
        m_status == 301 || m_status == 302 || m_status == 303 || m_status == 307 || m_status == 308;
    return leadsOn && m_hasLocation;
}

QString CurlAccount::detail() const {
    return textAfter(kDetail, m_lineBefore);
}

QString CurlAccount::redirect() const {
    return textAfter(kRedirect, m_lastLine);
}

} // namespace orvanta
