// SPDX-License-Identifier: MIT
#include "fakes/fake_channel.h"

#include "base/json_writer.h"
#include "orvanta_build_constants.h"

#include <QCryptographicHash>

namespace orvanta::fakes {

FakeChannel::FakeChannel(const QString& offeredVersion)
    : version(offeredVersion), platform(QString::fromLatin1(build::kPlatform)),
      arch(QString::fromLatin1(build::kArch)),
      sha256(QString::fromLatin1(
          QCryptographicHash::hash(archive, QCryptographicHash::Sha256).toHex())) {}

QByteArray FakeChannel::manifest() const {
    JsonWriter json;
    json.add("version", version);
    json.add("platform", platform);
    json.add("arch", arch);
    json.add("archiveUrl", archiveUrl);
    json.add("sha256", sha256);
    json.add("channel", channel);
    json.add("minRuntimeVersion", minRuntimeVersion);
    return json.encode();
}

std::optional<HttpReply> FakeChannel::reply(const FakeRequest& request) const {
    if (request.url.endsWith(QStringLiteral("/manifest.json"))) {
        return HttpReply{manifestStatus, otherDocument.value_or(manifest())};
    }
    if (request.url == archiveUrl) {
        return HttpReply{archiveStatus, archive};
    }
    return std::nullopt;
}

} // namespace orvanta::fakes
