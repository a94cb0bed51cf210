// SPDX-License-Identifier: MIT
// poll_client KIND URL SECONDS: requests URL every SECONDS from Qt's main loop, by
//
//   curl-loop  libcurl, over a new connection each time
//   curl-kept  libcurl, over one connection
//   qt-loop    Qt's own client, told to close the connection each time
//
// and does nothing with the reply.

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>

#include <curl/curl.h>

namespace {

std::size_t dropBody(char*, std::size_t, std::size_t size, void*) {
    return size;
}

std::function<void()> curlGet(const char* url, bool isKept) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    CURL* session = curl_easy_init();
    curl_easy_setopt(session, CURLOPT_URL, url);
    curl_easy_setopt(session, CURLOPT_WRITEFUNCTION, &dropBody);
    curl_easy_setopt(session, CURLOPT_FORBID_REUSE, isKept ? 0L : 1L);
    curl_easy_setopt(session, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(session, CURLOPT_PROXY, "");
    return [session] { curl_easy_perform(session); };
}

std::function<void()> qtGet(const char* url) {
    auto manager = std::make_shared<QNetworkAccessManager>();
    QNetworkRequest request{QUrl(QString::fromLatin1(url))};
    request.setRawHeader("Connection", "close");
    return [manager, request] {
        QNetworkReply* reply = manager->get(request);
        QObject::connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    };
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 4) {
        std::fputs("usage: poll_client curl-loop|curl-kept|qt-loop URL SECONDS\n", stderr);
        return 2;
    }
    const char* kind = argv[1];
    const auto get = std::strcmp(kind, "qt-loop") == 0
                         ? qtGet(argv[2])
                         : curlGet(argv[2], std::strcmp(kind, "curl-kept") == 0);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, get);
    timer.start(static_cast<int>(std::atof(argv[3]) * 1000));
    return QCoreApplication::exec();
}
