// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QString>

namespace orvanta {

/// A part of this program that is a library of its own, ../lib/orvanta-tray/modules/NAME.so from
/// the folder of the executable, because not every run needs it.
///
/// The file is opened at once and kept open, so that a program whose package is replaced while it
/// runs gets the part that belongs to it, however late it is loaded. Any thread.
class ProgramModule {
public:
    explicit ProgramModule(const QString& name);

    /// Loads the module, for the life of the process, and gives the address of its function of
    /// that name. Throws `PlatformError` when the module is missing or cannot be loaded.
    void* function(const char* name) const;

private:
    QString m_path;
    FileDescriptor m_file;
};

} // namespace orvanta
