// SPDX-License-Identifier: MIT
#include "platform/linux/program_module.h"

#include "base/platform_error.h"
#include "platform/linux/running_executable.h"

#include <QFile>

#include <dlfcn.h>
#include <fcntl.h>

namespace orvanta {
namespace {

QString pathOf(const QString& module) {
    const QString executable = runningExecutable();
    return executable.left(executable.lastIndexOf(u'/')) +
           QStringLiteral("/../lib/orvanta-tray/modules/%1.so").arg(module);
}

} // namespace

ProgramModule::ProgramModule(const QString& name)
    : m_path(pathOf(name)),
      m_file(::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC)) {}

void* ProgramModule::function(const char* name) const {
    const QByteArray path = m_file.isOpen() ? "/proc/self/fd/" + QByteArray::number(m_file.get())
                                            : QFile::encodeName(m_path);
    void* module = ::dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL);
    void* address = module != nullptr ? ::dlsym(module, name) : nullptr;
    if (address == nullptr) {
        throw PlatformError(
            QStringLiteral("module"), 1,
            QStringLiteral("%1, a part of Orvanta, could not be loaded; install Orvanta again (%2)")
                .arg(m_path, QString::fromLocal8Bit(::dlerror())));
    }
    return address;
}

} // namespace orvanta
