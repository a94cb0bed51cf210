// SPDX-License-Identifier: MIT
// watcher: a panel that shows nothing but writes down, in BENCH_LOG, when an icon registers with it
// ("registered 0 NS SERVICE") and what its tool tip says after each signal of a new icon or tool
// tip ("state 0 NS TITLE", with the time at which the signal came). Prints "ready" when it has its
// name. For each line on standard input it chooses the entry of that name in the menu of the latest
// icon and writes down when ("chosen 0 NS NAME").

#include "bench/harness/watcher.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QDBusVariant>
#include <QSocketNotifier>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string>

#include <unistd.h>

namespace {

const QString kItemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString kMenuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");

qint64 now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void log(const char* event, qint64 time, const QString& text) {
    std::FILE* file = std::fopen(qgetenv("BENCH_LOG").constData(), "ae");
    if (file != nullptr) {
        std::fprintf(
            file, "%s 0 %lld %s\n", event, static_cast<long long>(time),
            QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')).toUtf8().constData());
        std::fclose(file);
    }
}

QString titleOf(const QVariant& toolTip) {
    const auto argument = toolTip.value<QDBusArgument>();
    QString iconName;
    QString title;
    argument.beginStructure();
    argument >> iconName;
    argument.beginArray();
    while (!argument.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray pixels;
        argument.beginStructure();
        argument >> width >> height >> pixels;
        argument.endStructure();
    }
    argument.endArray();
    argument >> title;
    return title;
}

struct Entry {
    int id = 0;
    QString label;
    QVariantList children;
};

Entry decodeEntry(const QDBusArgument& argument) {
    Entry entry;
    QVariantMap properties;
    argument.beginStructure();
    argument >> entry.id >> properties >> entry.children;
    argument.endStructure();
    entry.label = properties.value(QStringLiteral("label")).toString();
    return entry;
}

} // namespace

void Watcher::RegisterStatusNotifierItem(const QString& service) {
    const qint64 time = now();
    const bool isPath = service.startsWith(QLatin1Char('/'));
    const QString owner = isPath ? message().service() : service;
    const QString path = isPath ? service : QStringLiteral("/StatusNotifierItem");
    m_owner = owner;
    m_path = path;
    log("registered", time, service);
    Q_EMIT StatusNotifierItemRegistered(service);
    for (const char* signal : {"NewIcon", "NewToolTip"}) {
        connection().connect(owner, path, kItemInterface, QLatin1String(signal), this,
                             SLOT(handleNews(QDBusMessage)));
    }
    ask(owner, path, time);
}

void Watcher::handleNews(const QDBusMessage& news) {
    ask(news.service(), news.path(), now());
}

void Watcher::ask(const QString& owner, const QString& path, qint64 time) {
    auto get = QDBusMessage::createMethodCall(
        owner, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get.setArguments({kItemInterface, QStringLiteral("ToolTip")});
    auto* call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(get), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [call, time] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (!reply.isError()) {
            log("state", time, titleOf(reply.value().variant()));
        }
        call->deleteLater();
    });
}

void Watcher::choose(const QString& name) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto getMenu = QDBusMessage::createMethodCall(
        m_owner, m_path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    getMenu.setArguments({kItemInterface, QStringLiteral("Menu")});
    const QDBusReply<QDBusVariant> menu = bus.call(getMenu);
    const QString path = menu.value().variant().value<QDBusObjectPath>().path();
    auto getLayout =
        QDBusMessage::createMethodCall(m_owner, path, kMenuInterface, QStringLiteral("GetLayout"));
    getLayout.setArguments({0, -1, QStringList{QStringLiteral("label")}});
    const QDBusMessage layout = bus.call(getLayout);
    const Entry root = decodeEntry(layout.arguments().value(1).value<QDBusArgument>());
    for (const QVariant& child : root.children) {
        const Entry entry = decodeEntry(child.value<QDBusArgument>());
        if (entry.label == name) {
            auto event = QDBusMessage::createMethodCall(m_owner, path, kMenuInterface,
                                                        QStringLiteral("Event"));
            const QVariant nothing = QVariant::fromValue(QDBusVariant(QString()));
            event.setArguments({entry.id, QStringLiteral("clicked"), nothing, 0U});
            log("chosen", now(), name);
            bus.send(event);
        }
    }
}

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    Watcher watcher;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), &watcher,
                       QDBusConnection::ExportAllContents);
    if (!bus.registerService(kWatcherService)) {
        std::fputs("watcher: another panel is there already\n", stderr);
        return 1;
    }
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &watcher, [&watcher, &input] {
        std::string name;
        if (std::getline(std::cin, name)) {
            watcher.choose(QString::fromStdString(name));
        } else {
            input.setEnabled(false);
        }
    });
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
