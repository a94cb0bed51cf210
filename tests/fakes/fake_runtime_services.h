// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_files.h"
#include "platform/archive_tool.h"
#include "platform/content_digest.h"
#include "platform/identifiers.h"

#include <QCryptographicHash>

#include <optional>
#include <vector>

namespace orvanta::fakes {

/// A tool for which every archive holds what the test has put into `contents`.
class FakeArchiveTool : public ArchiveTool {
public:
    explicit FakeArchiveTool(FakeFiles& files) : m_files(files) {}

    int extractZip(const QString& archive, const QString& destination) override;
    bool isSelfContained(const QString& directory) const override;

    struct Extraction {
        QString archive;
        QString destination;
        /// What the archive's file held.
        QByteArray bytes;
        bool inBackground = false;
    };

    /// Paths in here begin with "/".
    FakeFiles contents;
    int exitStatus = 0;
    /// Names of directories in `contents` with links to their neighbours.
    QStringList entangled;
    /// When set, the tool cannot be started for this reason.
    std::optional<QString> refusal;
    std::vector<Extraction> extractions;

private:
    FakeFiles& m_files;
};

/// Gives 00000000-0000-4000-8000-000000000001 and so on.
struct FakeIdentifiers : Identifiers {
    QString uuid() override { return number(++given); }
    static QString number(int index) {
        return QStringLiteral("00000000-0000-4000-8000-%1").arg(index, 12, 10, QLatin1Char('0'));
    }
    int given = 0;
};

/// The real digest, by another implementation than the application's.
struct FakeContentDigest : ContentDigest {
    QByteArray sha256(const QByteArray& bytes) const override {
        return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    }
};

} // namespace orvanta::fakes
