// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace orvanta {

/// What curl tells of an exchange on its standard error, where `curlArguments` makes it print, in
/// this order, all heads of the reply as they came, the trailers of its body, and two lines of its
/// own: kDetail with what went wrong, kRedirect with the whole address that a redirect leads to.
class CurlAccount {
public:
    static constexpr char kDetail[] = "error=";
    static constexpr char kRedirect[] = "redirect=";

    /// The next bytes, in pieces of any size. False when there have been more than any honest
    /// server has to say.
    bool take(QByteArrayView piece);

    /// The head of the reply itself, not that of an interim one, has come to its end.
    bool hasWholeHead() const { return m_state == State::AfterHead; }

    // Of that head, once it is whole.
    int status() const { return m_status; }
    /// How long the body is to be, as far as the server says so; only a hint.
    std::optional<qsizetype> announcedLength() const;
    /// It asks for the request to be sent to another address.
    bool isRedirect() const;

    // At the end.
    /// What went wrong, possibly empty.
    QString detail() const;
    /// Empty where nothing leads on, or to no address that curl understands.
    QString redirect() const;

private:
    enum class State { BeforeHead, InHead, AfterHead };

    void takeLine(QByteArrayView line);
    void beginHead(QByteArrayView statusLine);
    void takeField(QByteArrayView field);
    void endHead();

    qsizetype m_size = 0;
    QByteArray m_line; ///< not ended yet
    QByteArray m_lastLine;
    QByteArray m_lineBefore;
    State m_state = State::BeforeHead;
    int m_status = 0;
    std::optional<qsizetype> m_length;
    bool m_hasLocation = false;
};

} // namespace orvanta
