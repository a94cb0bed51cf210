// SPDX-License-Identifier: MIT
#pragma once

#include "base/platform_error.h"
#include "platform/application_host.h"
#include "platform/browser.h"
#include "platform/environment.h"
#include "platform/locations.h"
#include "platform/login_item.h"
#include "platform/standard_output.h"
#include "platform/wall_clock.h"

#include <QStringList>

#include <map>
#include <optional>

namespace orvanta::fakes {

struct FakeLocations : Locations {
    QString resourceRoot() const override { return QStringLiteral("/app/resources"); }
    QString applicationSupport() const override { return QStringLiteral("/home/user/share"); }
};

struct FakeEnvironment : Environment {
    const EnvironmentVariables& variables() const override { return values; }
    EnvironmentVariables values;
};

struct FakeWallClock : WallClock {
    QDateTime now() const override { return time; }
    QDateTime time = QDateTime(QDate(2026, 11, 15), QTime(21, 37, 51), Qt::UTC);
};

struct FakeLoginItem : LoginItem {
    bool isEnabled() const override { return enabled; }
    void registerItem() override { change(true); }
    void unregisterItem() override { change(false); }

    void change(bool wanted) {
        calls.append(wanted ? QStringLiteral("register") : QStringLiteral("unregister"));
        if (failure) {
            throw PlatformError(QStringLiteral("fake"), 1, *failure);
        }
        enabled = wanted;
    }

    bool enabled = false;
    std::optional<QString> failure;
    QStringList calls;
};

struct FakeBrowser : Browser {
    void open(const QUrl& url) override { opened.append(url); }
    QList<QUrl> opened;
};

struct FakeApplicationHost : ApplicationHost {
    void becomeAccessory() override { ++accessoryCount; }
    ObserverToken addWillTerminateObserver(std::function<void()> observer) override {
        observers.emplace(++lastToken, std::move(observer));
        return lastToken;
    }
    void removeObserver(ObserverToken token) override { observers.erase(token); }
    void terminate() override {
        ++terminateCount;
        const auto told = observers;
        for (const auto& [token, observer] : told) {
            observer();
        }
    }

    int accessoryCount = 0;
    int terminateCount = 0;
    ObserverToken lastToken = 0;
    std::map<ObserverToken, std::function<void()>> observers;
};

struct FakeStandardOutput : StandardOutput {
    void printLine(const QString& line) override { lines.append(line); }
    QStringList lines;
};

} // namespace orvanta::fakes
