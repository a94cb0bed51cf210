// SPDX-License-Identifier: MIT
#include "app/desktop_application.h"

#include "orvanta_build_constants.h"

#include <QApplication>
#include <QSessionManager>

#include <cstdio>
#include <cstdlib>

namespace orvanta {
namespace {

int statusWithoutDesktop = 0;

/// The toolkit would abort.
void leaveWithoutDesktop(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) {
        std::fputs("orvanta-tray: no desktop can be reached here; start it inside a desktop "
                   "session, or with --terminal.\n",
                   stderr);
        std::_Exit(statusWithoutDesktop);
    }
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

} // namespace

std::unique_ptr<QCoreApplication> makeDesktopApplication(int& argc, char** argv, int exitStatus) {
    statusWithoutDesktop = exitStatus;
    const QtMessageHandler usual = qInstallMessageHandler(leaveWithoutDesktop);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);

    QCoreApplication::setApplicationName(QStringLiteral("Orvanta"));
    QCoreApplication::setApplicationVersion(QLatin1String(build::kVersion));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.orvanta.tray"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const auto refuseRestart = [](QSessionManager& session) {
        session.setRestartHint(QSessionManager::RestartNever);
    };
    QObject::connect(application.get(), &QGuiApplication::commitDataRequest, refuseRestart);
    QObject::connect(application.get(), &QGuiApplication::saveStateRequest, refuseRestart);
    return application;
}

} // namespace orvanta
