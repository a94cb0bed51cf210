// SPDX-License-Identifier: MIT
#include "platform/qt/qt_application_host.h"

#include <QCoreApplication>

#include <QSemaphore>
#include <QThread>

#include <cstdlib>
#include <memory>

namespace orvanta {
namespace {

QtApplicationHost* current = nullptr;
QtMessageHandler usualMessageHandler = nullptr;

/// The last that the toolkit says before it ends the process because the display server has gone:
/// without `exit`, or by an `exit` in which its bus thread may crash before anything of ours runs.
bool isLastWord(const QString& text) {
    return text.startsWith(QLatin1String("The Wayland connection ")) ||
           text.startsWith(QLatin1String("The X11 connection broke"));
}

bool isMainThread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace

QtApplicationHost::QtApplicationHost(std::function<void()> becomeAccessory)
    : m_becomeAccessory(std::move(becomeAccessory)) {
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_context,
                     [this] { tellObservers(); });
    current = this;
    std::atexit([] { tellCurrent(); });
    usualMessageHandler = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
            if (isLastWord(text)) {
                tellCurrentFromAnyThread();
            }
            usualMessageHandler(type, context, text);
        });
}

QtApplicationHost::~QtApplicationHost() {
    current = nullptr;
    qInstallMessageHandler(usualMessageHandler);
}

ApplicationHost::ObserverToken
QtApplicationHost::addWillTerminateObserver(std::function<void()> observer) {
    m_observers.emplace(++m_lastToken, std::move(observer));
    return m_lastToken;
}

void QtApplicationHost::removeObserver(ObserverToken token) {
    m_observers.erase(token);
}

void QtApplicationHost::terminate() {
    tellObservers();
    // Queued: a loop that does not run yet would not notice.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

/// The toolkit may speak on a thread that watches the display server. The main one is free then, or
/// about to end the process itself.
void QtApplicationHost::tellCurrentFromAnyThread() {
    constexpr int kLongestWaitMs = 100;
    if (isMainThread()) {
        tellCurrent();
        return;
    }
    const auto told = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [told] {
            tellCurrent();
            told->release();
        },
        Qt::QueuedConnection);
    told->tryAcquire(1, kLongestWaitMs);
}

void QtApplicationHost::tellCurrent() {
    if (current) {
        current->tellObservers();
    }
}

void QtApplicationHost::tellObservers() {
    while (!m_observers.empty()) {
        const auto next = m_observers.extract(m_observers.begin());
        next.mapped()();
    }
}

} // namespace orvanta
