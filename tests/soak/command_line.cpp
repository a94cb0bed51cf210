// SPDX-License-Identifier: MIT
#include "soak/command_line.h"

#include "soak/failure.h"
#include "soak/run.h"
#include "soak/verdict.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace orvanta::soak {
namespace {

const QList<QCommandLineOption> kOptions{
    {QStringLiteral("hours"), QStringLiteral("How long."), QStringLiteral("H")},
    {QStringLiteral("minutes"), QStringLiteral("How long."), QStringLiteral("M"),
     QStringLiteral("1")},
    {QStringLiteral("restarts"),
     QStringLiteral("So many restarts as fast as can be, instead of everything."),
     QStringLiteral("N")},
    {QStringLiteral("seed"), QStringLiteral("Of what is chosen."), QStringLiteral("S")},
    {QStringLiteral("tray"), QStringLiteral("The program."), QStringLiteral("PATH"),
     QStringLiteral(ORVANTA_TRAY)},
    {QStringLiteral("csv"), QStringLiteral("Where each sample goes."), QStringLiteral("PATH"),
     QStringLiteral("soak.csv")}};

Plan planOf(const QCoreApplication& application) {
    QCommandLineParser parser;
    parser.addOptions(kOptions);
    parser.addHelpOption();
    parser.process(application);
    Plan plan;
    plan.seconds = parser.isSet(QStringLiteral("hours"))
                       ? parser.value(QStringLiteral("hours")).toDouble() * 3600
                       : parser.value(QStringLiteral("minutes")).toDouble() * 60;
    plan.restarts = parser.value(QStringLiteral("restarts")).toInt();
    plan.seed = parser.isSet(QStringLiteral("seed"))
                    ? parser.value(QStringLiteral("seed")).toULongLong()
                    : std::random_device()();
    plan.tray = parser.value(QStringLiteral("tray"));
    plan.csv = parser.value(QStringLiteral("csv"));
    return plan;
}

int verdictOn(const std::vector<Sample>& samples) {
    print(tableOf(samples));
    if (ORVANTA_SANITIZED) {
        print(QStringLiteral("Memory is not judged: a sanitizer keeps what is freed."));
    }
    const QStringList complaints = complaintsAbout(samples, !ORVANTA_SANITIZED);
    for (const QString& complaint : complaints) {
        print(QStringLiteral("FAILED: ") + complaint);
    }
    if (complaints.isEmpty()) {
        print(QStringLiteral("Passed: nothing that is held grew."));
    }
    return complaints.isEmpty() ? 0 : 1;
}

} // namespace

int soakFor(User& user) {
    const Plan plan = planOf(*QCoreApplication::instance());
    print(QStringLiteral("seed %1").arg(plan.seed));
    try {
        Run run(plan, user);
        run.go();
        return verdictOn(run.samples());
    } catch (const Failure& failure) {
        print(QStringLiteral("The tray last said:\n%1\nFAILED: %2")
                  .arg(user.scene(), QString::fromUtf8(failure.what())));
        return 1;
    }
}

} // namespace orvanta::soak
