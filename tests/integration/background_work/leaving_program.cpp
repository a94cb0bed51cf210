// SPDX-License-Identifier: MIT
// Ends in the ordinary way while a long job is at work and others wait. Prints the milliseconds
// from the end of the event loop to that of main.
#include "platform/qt/background_work.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QElapsedTimer clock;
    std::optional<orvanta::QtBackgroundWork> work(std::in_place);
    for (int i = 0; i < 3; ++i) {
        work->run([] { std::this_thread::sleep_for(std::chrono::seconds(30)); });
    }
    QTimer::singleShot(50, &application, &QCoreApplication::quit);
    QCoreApplication::exec();
    clock.start();
    work.reset();
    std::printf("%lld\n", static_cast<long long>(clock.elapsed()));
}
