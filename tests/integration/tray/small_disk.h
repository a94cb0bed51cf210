// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvanta::tests {

/// A disk of a few megabytes in place of a directory. Only this process and its children see it.
class SmallDisk {
public:
    explicit SmallDisk(QString directory) : m_directory(std::move(directory)) {}
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    /// Puts the empty disk over the directory, which it makes; what keeps it from that, or nothing.
    QString mount();
    /// Takes all room that is left; false when some is left all the same.
    bool fill() const;
    /// Gives back what `fill` took.
    bool makeRoom() const;
    /// False when the system refuses.
    bool setReadOnly(bool isReadOnly) const;

private:
    QByteArray path() const;
    QString ballast() const { return m_directory + QStringLiteral("/ballast"); }

    const QString m_directory;
    bool m_isMounted = false;
};

} // namespace orvanta::tests
