// SPDX-License-Identifier: MIT
#include "connector/dashboard_address.h"

namespace orvanta {
namespace {

/// `path` is percent-encoded, `component` is plain text in which a "/" separates as well.
QString appendingPathComponent(QString path, const QString& component) {
    static const QByteArray kAllowedInPath = "/!$&'()*+,;=:@";
    QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(component, kAllowedInPath));
    if (!path.endsWith(u'/')) {
        path += u'/';
    }
    while (encoded.startsWith(u'/')) {
        encoded.remove(0, 1);
    }
    return path + encoded;
}

} // namespace

QUrl dashboardAddress(const QUrl& webAppBaseURL, const std::optional<QString>& workspaceId) {
    if (!workspaceId || workspaceId->isEmpty()) {
        return webAppBaseURL;
    }
    const QString workspaces =
        appendingPathComponent(webAppBaseURL.path(QUrl::FullyEncoded), QStringLiteral("workspace"));
    QUrl address = webAppBaseURL;
    address.setPath(appendingPathComponent(workspaces, *workspaceId), QUrl::StrictMode);
    return address;
}

} // namespace orvanta
