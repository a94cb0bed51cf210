// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <map>
#include <string>

namespace orvanta {

/// Makes a runtime of that version: what a runtime must have, and a file that nobody asks for but
/// the runtime itself.
void makeRuntime(const QString& root, const QString& version);

/// Whether each file of that version is there with all its contents. Tells more than the test that
/// the application makes, which cannot know what belongs to a version.
bool isWhole(const QString& root, const QString& version);

/// What a runtime says that is launched like a connector; why not, if it cannot be launched.
QByteArray outputOf(const QString& node, const QString& localServer);
/// What a whole one of that version says.
QByteArray expectedOutput(const QString& version);

/// A zip archive of all that is in `folder`.
QByteArray zipOf(const QString& folder);

void copyTree(const QString& from, const QString& to);

/// Items by their paths, with kind, mode and contents.
using Snapshot = std::map<std::string, std::string>;

/// Every item below `root`.
Snapshot snapshotOf(const QString& root);

} // namespace orvanta
