// SPDX-License-Identifier: MIT
#include "platform/qt/qt_application_host.h"

#include <QCoreApplication>

#include <cstdlib>

namespace orvanta {
namespace {

QtApplicationHost* current = nullptr;

} // namespace

QtApplicationHost::QtApplicationHost(std::function<void()> becomeAccessory)
    : m_becomeAccessory(std::move(becomeAccessory)) {
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_context,
                     [this] { tellObservers(); });
    current = this;
    std::atexit([] {
        if (current) {
            current->tellObservers();
        }
    });
}

QtApplicationHost::~QtApplicationHost() {
    current = nullptr;
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

void QtApplicationHost::tellObservers() {
    while (!m_observers.empty()) {
        const auto next = m_observers.extract(m_observers.begin());
        next.mapped()();
    }
}

} // namespace orvanta
