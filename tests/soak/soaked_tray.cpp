// SPDX-License-Identifier: MIT
#include "soak/soaked_tray.h"

#include "integration/tray/copied_tray.h"
#include "integration/tray/process_table.h"
#include "soak/failure.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

namespace orvanta::soak {
namespace {

constexpr int kLookIntervalMs = 10;
constexpr int kPairLimitMs = 15'000;
constexpr int kEndLimitMs = 10'000;

/// What a desktop or a proxy of this machine would change.
const char* const kForeignVariables[]{"DISPLAY",    "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS",
                                      "http_proxy", "https_proxy",     "HTTPS_PROXY",
                                      "all_proxy",  "ALL_PROXY",       "no_proxy",
                                      "NO_PROXY"};

QProcessEnvironment environmentIn(const QTemporaryDir& home) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : kForeignVariables) {
        environment.remove(QString::fromLatin1(name));
    }
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("share")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), home.filePath(QStringLiteral("system")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("run")));
    return environment;
}

/// Short time-outs, so that a connector that hangs is seen to.
QByteArray configuration(const QString& channel) {
    const QJsonObject updates{{QStringLiteral("manifestBaseUrl"), channel},
                              {QStringLiteral("channel"), QStringLiteral("beta")}};
    const QJsonObject tray{{QStringLiteral("statusPollIntervalSeconds"), 0.2},
                           {QStringLiteral("httpTimeoutSeconds"), 1},
                           {QStringLiteral("httpResourceTimeoutSeconds"), 2}};
    return QJsonDocument(QJsonObject{{QStringLiteral("runtimeUpdates"), updates},
                                     {QStringLiteral("tray"), tray}})
        .toJson();
}

QString programOf(pid_t pid) {
    return QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(pid));
}

} // namespace

SoakedTray::SoakedTray(const QString& executable, User& seenBy)
    : user(seenBy), m_journal(stateRoot() + QStringLiteral("/demo-journal.jsonl")) {
    install(executable);
    start();
    require(waitUntil([this] { return hasOneChild() && m_journal.isListening(); }),
            QStringLiteral("no connector came up"));
}

SoakedTray::~SoakedTray() {
    m_tray.terminate();
    if (!m_tray.waitForFinished(kEndLimitMs)) {
        m_tray.kill();
        m_tray.waitForFinished();
    }
    m_journal.read();
    if (m_journal.pid() > 0 && tests::isAlive(m_journal.pid())) {
        ::kill(m_journal.pid(), SIGKILL);
    }
}

void SoakedTray::install(const QString& executable) {
    require(!channel.baseUrl().isEmpty(), QStringLiteral("no release channel"));
    const QDir home(m_home.path());
    for (const char* folder : {"prefix/share", "run", "share/Orvanta"}) {
        home.mkpath(QLatin1String(folder));
    }
    require(!tests::copyTray(executable, home.filePath(QStringLiteral("prefix"))).isEmpty(),
            QStringLiteral("cannot copy ") + executable);
    const QString shipped = channel.makeRuntime(QStringLiteral("shipped"), QStringLiteral("1.0.0"));
    require(!shipped.isEmpty() &&
                QDir().rename(shipped, home.filePath(QStringLiteral("prefix/share/orvanta"))),
            QStringLiteral("no runtime to ship"));
    write(QStringLiteral("demo-switches.json"), R"({"journal":true})");
    write(QStringLiteral("config.json"), configuration(channel.baseUrl()));
}

void SoakedTray::start() {
    m_tray.setProcessEnvironment(user.prepare(m_home.path(), environmentIn(m_home)));
    m_tray.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_tray.start(m_home.filePath(QStringLiteral("prefix/bin/orvanta-tray")), user.arguments());
    require(m_tray.waitForStarted(), QStringLiteral("the tray does not start"));
    user.watch(m_tray);
}

void SoakedTray::write(const QString& name, const QByteArray& bytes) const {
    QFile file(stateRoot() + QLatin1Char('/') + name);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
            QStringLiteral("cannot write ") + name);
}

bool SoakedTray::waitUntil(const std::function<bool()>& condition, int limitMs) {
    QElapsedTimer elapsed;
    elapsed.start();
    const auto look = [this] {
        user.look();
        m_journal.read();
    };
    look();
    while (!condition()) {
        if (elapsed.elapsed() > limitMs || m_tray.state() == QProcess::NotRunning) {
            return false;
        }
        m_tray.waitForReadyRead(kLookIntervalMs);
        look();
    }
    return true;
}

void SoakedTray::pauseFor(int ms) {
    waitUntil([] { return false; }, ms);
}

bool SoakedTray::hasOneChild() const {
    return m_journal.pid() > 0 && tests::childrenOf(pid()) == std::vector<pid_t>{m_journal.pid()};
}

pid_t SoakedTray::awaitNewChild(pid_t before) {
    pid_t child = 0;
    const auto isThere = [&] {
        const std::vector<pid_t> children = tests::childrenOf(pid());
        child = children.size() == 1 ? children.front() : before;
        const QString program = programOf(child);
        return child != before && !program.isEmpty() && program != programOf(pid());
    };
    awaitOne(isThere, before);
    return child;
}

void SoakedTray::awaitNewConnector(pid_t before) {
    awaitOne([&] { return m_journal.pid() != before && hasOneChild(); }, before);
}

void SoakedTray::awaitOne(const std::function<bool()>& isThere, pid_t before) {
    if (waitUntil(isThere, kPairLimitMs)) {
        return;
    }
    if (tests::childrenOf(pid()).size() == 2) {
        endPair();
    }
    require(waitUntil(isThere), QStringLiteral("no other child came after %1").arg(before));
}

/// A connector that takes longer than half a second to stop makes the tray forget its successor, by
/// design, and start a third. On a machine that is busy enough every connector may take so long.
/// Of two that exit together only the first is restarted.
void SoakedTray::endPair() {
    for (const pid_t child : tests::childrenOf(pid())) {
        ::kill(child, SIGKILL);
    }
    ++m_pairsEnded;
}

QStringList SoakedTray::versions() const {
    return QDir(storePath(QStringLiteral("versions")))
        .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

QString SoakedTray::inState(const char* member) const {
    QFile file(storePath(QStringLiteral("current.json")));
    require(file.open(QIODevice::ReadOnly), QStringLiteral("no current.json"));
    return QJsonDocument::fromJson(file.readAll()).object().value(QLatin1String(member)).toString();
}

void SoakedTray::settle() {
    require(waitUntil([this] {
                return user.said(QStringLiteral("Status: ")) == QStringLiteral("Not Paired") &&
                       m_journal.isListening() && hasOneChild();
            }),
            QStringLiteral("it did not settle"));
    m_journal.shorten();
}

} // namespace orvanta::soak
