// SPDX-License-Identifier: MIT
#include "platform/linux/program_module.h"

#include "base/platform_error.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

namespace orvanta {
namespace {

QString pathOf(const QString& module) {
    // There is no QCoreApplication to ask: it may come from the module.
    const QString executable = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    return QStringLiteral("%1/../lib/orvanta-tray/modules/%2.so")
        .arg(QFileInfo(executable).path(), module);
}

[[noreturn]] void fail(const QString& name) {
    throw PlatformError(QStringLiteral("module"), 1,
                        QStringLiteral("its part “%1” could not be loaded; install it again (%2).")
                            .arg(name, QString::fromLocal8Bit(::dlerror())));
}

} // namespace

void* moduleFunction(const QString& name, const char* function) {
    void* module = ::dlopen(QFile::encodeName(pathOf(name)).constData(), RTLD_NOW | RTLD_LOCAL);
    void* address = module != nullptr ? ::dlsym(module, function) : nullptr;
    if (address == nullptr) {
        fail(name);
    }
    return address;
}

} // namespace orvanta
