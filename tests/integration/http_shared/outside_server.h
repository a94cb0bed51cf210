// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QTemporaryDir>

namespace orvanta {

/// A web server as it could stand anywhere, though it stands on this machine: http and https, with
/// a certificate for "localhost" and "name.invalid" of an authority of its own. The first is also a
/// proxy, all of whose tunnels lead to the second. Its end ends the server.
class OutsideServer {
public:
    /// False when it did not come up.
    bool start();
    ~OutsideServer();

    /// "https://localhost:4711/path" for "https" and "/path".
    QString url(const char* scheme, const char* path) const;
    /// The certificate of the authority.
    QString authority() const { return m_folder.filePath(QStringLiteral("authority.pem")); }
    int port(const char* scheme) const;

private:
    bool makeCertificates();

    QTemporaryDir m_folder;
    QProcess m_process;
    int m_httpPort = 0;
    int m_httpsPort = 0;
};

} // namespace orvanta
