// SPDX-License-Identifier: MIT
#include "simulation/world/channel.h"

#include "base/platform_error.h"
#include "fakes/fake_channel.h"

#include <QCryptographicHash>

namespace orvanta::simulation {

namespace {

void add(FileNode& root, const QString& path, const QByteArray& bytes, bool isExecutable = false) {
    FileNode* node = &root;
    for (const QString& name : path.split(QLatin1Char('/'))) {
        node->isDirectory = true;
        auto& child = node->children[name];
        if (!child) {
            child = std::make_unique<FileNode>();
        }
        node = child.get();
    }
    node->bytes = bytes;
    node->isExecutable = isExecutable;
}

const char* const kLocalServerFiles[] = {"server.js", "config.installer.json", "cloudflared",
                                         "views/project-list.html", "public/index3.html"};

QByteArray archiveBytes(std::int64_t version, ArchiveReply kind) {
    return QByteArray("archive ") + QByteArray::number(qlonglong(version)) + ' ' +
           QByteArray::number(static_cast<int>(kind));
}

ServerAction replyAfter(Moment delay, int status, const QByteArray& body) {
    return {.delay = delay, .reply = HttpReply{status, body}};
}

} // namespace

std::unique_ptr<FileNode> runtimeTree(const QString& version) {
    auto root = std::make_unique<FileNode>();
    for (const char* file : kLocalServerFiles) {
        const QString path = QStringLiteral("local-server/") + QLatin1String(file);
        const bool isTemplate = path.endsWith(QLatin1String("config.installer.json"));
        add(*root, path, isTemplate ? QByteArray(kConfigs.front().bytes) : version.toUtf8());
    }
    add(*root, QStringLiteral("node-runtime/node"), "node", true);
    return root;
}

std::optional<QString> realVersion(const WorldFiles& files, const QString& root) {
    for (const char* file : kLocalServerFiles) {
        if (!files.itemExists(root + QStringLiteral("/local-server/") + QLatin1String(file))) {
            return std::nullopt;
        }
    }
    const auto version = files.peek(root + QStringLiteral("/local-server/server.js"));
    return version && files.isExecutableFile(root + QStringLiteral("/node-runtime/node"))
               ? std::optional(QString::fromUtf8(*version))
               : std::nullopt;
}

ServerAction Channel::manifestAnswer(Moment delay) const {
    const std::int64_t offer = m_conditions[Condition::offer];
    const std::int64_t minimum = m_conditions[Condition::minimum];
    const auto archive = m_conditions.as<ArchiveReply>(Condition::archive);
    fakes::FakeChannel channel(QString::fromLatin1(kVersions.at(static_cast<std::size_t>(offer))));
    channel.archiveUrl =
        QStringLiteral("https://files.example/%1/%2.zip").arg(offer).arg(static_cast<int>(archive));
    channel.sha256 = QString::fromLatin1(
        QCryptographicHash::hash(archiveBytes(offer, archive), QCryptographicHash::Sha256).toHex());
    if (archive == ArchiveReply::wrongDigest) {
        channel.sha256.fill(QLatin1Char('0'));
    } else if (archive == ArchiveReply::badAddress) {
        channel.archiveUrl = QStringLiteral("no address");
    }
    if (minimum >= 0) {
        channel.minRuntimeVersion =
            QString::fromLatin1(kVersions.at(static_cast<std::size_t>(minimum)));
    }
    switch (m_conditions.as<ManifestReply>(Condition::manifest)) {
    case ManifestReply::good: {
        ServerAction action = replyAfter(delay, 200, channel.manifest());
        action.offer = Offer{channel.version, channel.minRuntimeVersion.value_or(QString())};
        return action;
    }
    case ManifestReply::notFound:
        return replyAfter(delay, 404, channel.manifest());
    case ManifestReply::notModified:
        return replyAfter(delay, 304, {});
    case ManifestReply::notJson:
        return replyAfter(delay, 200, "<html>");
    case ManifestReply::otherProcessor:
        channel.arch = QStringLiteral("vax");
        return replyAfter(delay, 200, channel.manifest());
    case ManifestReply::tooLarge:
        return replyAfter(delay, 200, QByteArray(1024 * 1024 + 1, ' '));
    case ManifestReply::cut:
        return {.delay = delay, .reply = std::nullopt};
    case ManifestReply::silence:
        break;
    }
    return {};
}

ServerAction Channel::archiveAnswer(Moment delay, const QString& url) const {
    const QStringList pieces = url.split(QLatin1Char('/'));
    const auto kind = static_cast<ArchiveReply>(
        pieces.last().left(pieces.last().indexOf(QLatin1Char('.'))).toInt());
    const std::int64_t version = pieces.at(pieces.size() - 2).toLongLong();
    switch (kind) {
    case ArchiveReply::cut:
        return {.delay = delay, .reply = std::nullopt};
    case ArchiveReply::errorPage:
        return replyAfter(delay, 404, "<html>gone</html>");
    case ArchiveReply::silence:
        return {};
    default:
        return replyAfter(delay, 200, archiveBytes(version, kind));
    }
}

int WorldArchiveTool::extractZip(const QString& archive, const QString& destination) {
    const QList<QByteArray> words = m_files.readFile(archive).split(' ');
    const QString version = QString::fromLatin1(kVersions.at(words.at(1).toUInt()));
    const auto kind = static_cast<ArchiveReply>(words.at(2).toInt());
    if (kind == ArchiveReply::toolRefused) {
        throw PlatformError(QStringLiteral("posix"), 2, QStringLiteral("The tool is missing"));
    }
    // What has another digest than the manifest says is not what the manifest is about.
    auto tree =
        runtimeTree(kind == ArchiveReply::wrongDigest ? QStringLiteral("tampered") : version);
    if (kind == ArchiveReply::incomplete) {
        tree->children.at(QStringLiteral("local-server"))
            ->children.erase(QStringLiteral("cloudflared"));
    } else if (kind == ArchiveReply::nodeNotExecutable) {
        tree->children.at(QStringLiteral("node-runtime"))
            ->children.at(QStringLiteral("node"))
            ->isExecutable = false;
    }
    m_files.beforeChange();
    if (!m_files.hasRoom()) {
        return 1;
    }
    if (kind == ArchiveReply::atTop) {
        for (auto& [name, part] : tree->children) {
            m_files.putTree(destination + QLatin1Char('/') + name, std::move(part));
        }
    } else {
        m_files.putTree(destination + QStringLiteral("/runtime"), std::move(tree));
    }
    return kind == ArchiveReply::toolFails ? 1 : 0;
}

} // namespace orvanta::simulation
