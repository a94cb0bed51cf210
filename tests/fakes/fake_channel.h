// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_http.h"

#include <QByteArray>
#include <QString>

namespace orvanta::fakes {

/// A web server with one manifest and one archive. `version` is what the manifest offers; the
/// members below it hold a good manifest until a test changes them.
struct FakeChannel {
    explicit FakeChannel(const QString& offeredVersion);

    /// The manifest as the server sends it.
    QByteArray manifest() const;
    /// The reply to a GET of the manifest or the archive; nothing for any other request.
    std::optional<HttpReply> reply(const FakeRequest& request) const;

    QString version;
    QString platform;
    QString arch;
    QString archiveUrl = QStringLiteral("https://files.example/runtime.zip");
    QByteArray archive = "an archive";
    QString sha256;
    std::optional<QString> channel;
    std::optional<QString> minRuntimeVersion;
    /// 0 makes the request fail.
    int manifestStatus = 200;
    int archiveStatus = 200;
    /// When set, sent instead of the manifest.
    std::optional<QByteArray> otherDocument;
};

} // namespace orvanta::fakes
