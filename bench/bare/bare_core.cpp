// SPDX-License-Identifier: MIT
// bare_core [URL SECONDS]: the least that a program with Qt's main loop and one HTTP session is: a
// loop that with arguments requests URL every SECONDS, each time over a new connection.

#include "bench/bare/monotonic_log.h"

#include <QCoreApplication>
#include <QTimer>

#include <curl/curl.h>

namespace {

std::size_t dropBody(char*, std::size_t, std::size_t size, void*) {
    return size;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    CURL* session = curl_easy_init();
    curl_easy_setopt(session, CURLOPT_WRITEFUNCTION, &dropBody);
    curl_easy_setopt(session, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(session, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(session, CURLOPT_PROXY, "");

    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [session] { curl_easy_perform(session); });
    if (argc == 3) {
        curl_easy_setopt(session, CURLOPT_URL, argv[1]);
        timer.start(std::atoi(argv[2]) * 1000);
    }
    QTimer::singleShot(0, [] { logNow("turned"); });
    return QCoreApplication::exec();
}
