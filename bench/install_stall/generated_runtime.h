// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>

namespace orvanta::bench {

/// A runtime of 200 MB in 5,000 files, half of it the node executable, that does not compress;
/// published and offered by a web server on this machine. It is to be installed, not to be run.
class GeneratedRuntime {
public:
    /// Makes and publishes it below `folder`. False, with the reason on standard error, when that
    /// failed.
    bool make(const QString& folder);
    ~GeneratedRuntime();

    /// local-server/ and node-runtime/.
    const QString& path() const { return m_path; }
    /// Where trays find its manifest.
    const QString& baseUrl() const { return m_baseUrl; }

private:
    bool serve(const QString& folder);

    QString m_path;
    QString m_baseUrl;
    QProcess m_server;
};

} // namespace orvanta::bench
