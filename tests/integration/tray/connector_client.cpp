// SPDX-License-Identifier: MIT
#include "integration/tray/connector_client.h"

#include <QJsonDocument>

#include <curl/curl.h>

#include <memory>

namespace orvanta::tests {

namespace {

std::size_t append(char* bytes, std::size_t size, std::size_t count, void* target) {
    static_cast<QByteArray*>(target)->append(bytes, static_cast<qsizetype>(size * count));
    return size * count;
}

} // namespace

std::optional<Reply> request(const QByteArray& method, const QString& url, const QByteArray& body,
                             int limitMs) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                     curl_easy_cleanup);
    Reply reply;
    const QByteArray address = url.toUtf8();
    curl_easy_setopt(handle.get(), CURLOPT_URL, address.constData());
    curl_easy_setopt(handle.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(handle.get(), CURLOPT_CUSTOMREQUEST, method.constData());
    if (method == "POST") {
        curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, body.constData());
        curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    }
    curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT_MS, static_cast<long>(limitMs));
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &reply.body);
    if (curl_easy_perform(handle.get()) != CURLE_OK) {
        return std::nullopt;
    }
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &reply.status);
    return reply;
}

QString ConnectorClient::url(const QString& path) const {
    return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path);
}

bool ConnectorClient::post(const QString& path, const QByteArray& body, int limitMs) const {
    const auto reply = request("POST", url(path), body, limitMs);
    return reply && reply->status >= 200 && reply->status <= 299;
}

QJsonObject ConnectorClient::get(const QString& path) const {
    const auto reply = request("GET", url(path));
    return reply ? QJsonDocument::fromJson(reply->body).object() : QJsonObject();
}

} // namespace orvanta::tests
