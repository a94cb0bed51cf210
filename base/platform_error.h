// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <exception>

namespace orvanta {

/// A failure that a platform service reports, or one of the system's own. Thrown by services,
/// caught by the logic at the places where the user is told of it; that of a request is a value,
/// see `HttpOutcome`.
class PlatformError : public std::exception {
public:
    /// `domain` names the family of the code ("OrvantaMac", "posix", "http"), `description` is a
    /// sentence that can be shown to the user as it is.
    PlatformError(QString domain, int code, QString description)
        : m_domain(std::move(domain)), m_code(code), m_description(std::move(description)),
          m_what(m_description.toUtf8()) {}

    const QString& domain() const { return m_domain; }
    int code() const { return m_code; }
    const QString& description() const { return m_description; }
    const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_domain;
    int m_code;
    QString m_description;
    QByteArray m_what;
};

} // namespace orvanta
