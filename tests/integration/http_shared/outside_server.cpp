// SPDX-License-Identifier: MIT
#include "integration/http_shared/outside_server.h"

namespace orvanta {
namespace {

constexpr int kPatience = 20000; // milliseconds

bool openssl(const QString& folder, const QString& arguments) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral(OPENSSL_PROGRAM), arguments.split(u' '));
    return process.waitForFinished(kPatience) && process.exitCode() == 0;
}

} // namespace

bool OutsideServer::start() {
    if (!makeCertificates()) {
        return false;
    }
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(NODE_PROGRAM),
                    {QStringLiteral(OUTSIDE_SERVER), m_folder.filePath(QStringLiteral("key.pem")),
                     m_folder.filePath(QStringLiteral("certificate.pem"))});
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(kPatience)) {
            return false;
        }
    }
    const QList<QByteArray> ports = m_process.readLine().trimmed().split(' ');
    m_httpPort = ports.value(0).toInt();
    m_httpsPort = ports.value(1).toInt();
    return m_httpPort > 0 && m_httpsPort > 0;
}

OutsideServer::~OutsideServer() {
    m_process.closeWriteChannel();
    m_process.waitForFinished(kPatience);
}

bool OutsideServer::makeCertificates() {
    QFile names(m_folder.filePath(QStringLiteral("names")));
    if (!names.open(QIODevice::WriteOnly) ||
        names.write("subjectAltName=DNS:localhost,DNS:name.invalid\n") < 0) {
        return false;
    }
    names.close();
    return openssl(m_folder.path(),
                   QStringLiteral("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=Authority "
                                  "-keyout authority.key -out authority.pem")) &&
           openssl(m_folder.path(),
                   QStringLiteral("req -newkey rsa:2048 -nodes -subj /CN=localhost "
                                  "-keyout key.pem -out request.pem")) &&
           openssl(m_folder.path(),
                   QStringLiteral("x509 -req -in request.pem -CA authority.pem -CAkey "
                                  "authority.key -CAcreateserial -days 2 -extfile names "
                                  "-out certificate.pem"));
}

int OutsideServer::port(const char* scheme) const {
    return qstrcmp(scheme, "https") == 0 ? m_httpsPort : m_httpPort;
}

QString OutsideServer::url(const char* scheme, const char* path) const {
    return QStringLiteral("%1://localhost:%2%3")
        .arg(QLatin1String(scheme))
        .arg(port(scheme))
        .arg(QLatin1String(path));
}

} // namespace orvanta
