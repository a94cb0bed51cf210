// SPDX-License-Identifier: MIT
#include "platform/curl/web_exchange.h"

#include "platform/curl/curl_arguments.h"
#include "platform/curl/web_failure.h"
#include "platform/http/http_failure.h"

#include <sys/wait.h>

#include <utility>

namespace orvanta {
namespace {

constexpr int kMostRedirects = 20;
constexpr int kOk = 200;

/// Of a page that only leads to another; nobody gets to see it.
constexpr qsizetype kLargestRedirectBody = 1024 * 1024;

bool isEncrypted(const QString& url) {
    return url.startsWith(QLatin1String("https:"), Qt::CaseInsensitive);
}

} // namespace

WebExchange::WebExchange(const CurlSetup& setup, HttpRequest toSend)
    : Exchange(std::move(toSend)), m_setup(setup) {}

void WebExchange::run(const QString& url) {
    if (!isAddressForCurl(url)) {
        return fail(web_failure::notOfTheWeb(url));
    }
    m_url = url;
    m_account = CurlAccount();
    m_body.emplace(0, false);
    ChildProcessOptions options;
    options.executable = m_setup.executable;
    options.arguments = curlArguments(request().method, url, m_setup, request().limits.idle);
    options.workingDirectory = QStringLiteral("/");
    options.environment = m_setup.environment;
    CurlListener& listener = *this;
    try {
        m_programs.push_back(std::make_unique<CurlProgram>(options, m_setup.watchExits, listener));
    } catch (const PlatformError& refusal) {
        fail(web_failure::notStarted(refusal));
    }
}

void WebExchange::takeAccount(QByteArrayView piece) {
    noteActivity();
    const bool hadWholeHead = m_account.hasWholeHead();
    if (!m_account.take(piece)) {
        fail(web_failure::headTooLong(m_url));
    } else if (!hadWholeHead && m_account.hasWholeHead()) {
        prepareBody();
    }
}

void WebExchange::prepareBody() {
    const bool isGet = request().method == HttpMethod::Get;
    if (isLedOn()) {
        m_body.emplace(kLargestRedirectBody, false);
    } else if (isGet && m_account.status() != kOk && request().largestBody < kLargestWebBody) {
        m_body.emplace(kLargestWebBody, false);
    } else {
        m_body.emplace(request().largestBody, isGet);
    }
    if (!m_body->expect(m_account.announcedLength().value_or(0))) {
        fail(http_failure::bodyTooLarge(m_body->largest(), m_url));
    }
}

ReplyBody::Progress WebExchange::readBody(int descriptor) {
    const ReplyBody::Progress progress = m_body->readFrom(descriptor);
    if (progress == ReplyBody::Progress::Read) {
        noteActivity();
    } else if (progress == ReplyBody::Progress::TooLarge) {
        fail(http_failure::bodyTooLarge(m_body->largest(), m_url));
    }
    return progress;
}

bool WebExchange::isLedOn() const {
    return request().method == HttpMethod::Get && m_account.isRedirect();
}

void WebExchange::takeEnd(int status) {
    if (status == -1) {
        fail(web_failure::lostSightOf(m_url));
    } else if (WIFSIGNALED(status)) {
        fail(web_failure::endedBySignal(WTERMSIG(status), m_url));
    } else {
        takeExit(WEXITSTATUS(status));
    }
}

void WebExchange::takeExit(int code) {
    if (code != 0) {
        fail(web_failure::ofCurl(code, m_url, m_account.detail()));
    } else if (!m_account.hasWholeHead()) {
        // curl is content with a connection that closes amid the headers.
        fail(web_failure::cutWithinHead(m_url));
    } else if (isLedOn() && !m_account.redirect().isEmpty()) {
        follow(m_account.redirect());
    } else {
        succeed({m_account.status(), m_body->take()});
    }
}

void WebExchange::follow(const QString& url) {
    if (m_redirects == kMostRedirects) {
        fail(web_failure::tooManyRedirects(kMostRedirects, request().url));
    } else if (isEncrypted(m_url) && !isEncrypted(url)) {
        fail(web_failure::lostEncryption(request().url));
    } else {
        ++m_redirects;
        run(url);
    }
}

void WebExchange::stop() {
    if (!m_programs.empty()) {
        m_programs.back()->kill();
    }
}

} // namespace orvanta
