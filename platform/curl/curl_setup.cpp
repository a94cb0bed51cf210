// SPDX-License-Identifier: MIT
#include "platform/curl/curl_setup.h"

#include <QFile>
#include <QFileInfo>

#include <utility>
#include <vector>

namespace orvanta {
namespace {

/// curl does not run in our folder, from which the name of the file may go.
QString trustStoreIn(const EnvironmentVariables& variables) {
    const QByteArray file = variables.value("SSL_CERT_FILE").value_or(QByteArray());
    return file.isEmpty() ? QString() : QFileInfo(QFile::decodeName(file)).absoluteFilePath();
}

/// As curl would find them, which looks no further once it is told anything.
QByteArray exceptionsIn(const EnvironmentVariables& variables) {
    const QByteArray exceptions = variables.value("no_proxy").value_or(QByteArray());
    return exceptions.isEmpty() ? variables.value("NO_PROXY").value_or(QByteArray()) : exceptions;
}

/// A proxy elsewhere knows nothing of this machine's own servers, and one on it is not needed.
QByteArray withoutProxy(const EnvironmentVariables& variables) {
    const QByteArray exceptions = exceptionsIn(variables);
    // An asterisk means every address, but only when it stands alone.
    return exceptions == "*" ? exceptions : "localhost,127.0.0.0/8,::1," + exceptions;
}

EnvironmentVariables curlEnvironment(const EnvironmentVariables& variables) {
    std::vector<EnvironmentVariables::Variable> kept = variables.all();
    std::erase_if(kept, [](const EnvironmentVariables::Variable& variable) {
        return variable.first == "CURL_CA_BUNDLE" || variable.first == "SSL_CERT_DIR" ||
               variable.first == "SSL_CERT_FILE";
    });
    EnvironmentVariables environment(std::move(kept));
    // English sentences, and addresses in UTF-8.
    environment.set("LC_ALL", "C.UTF-8");
    return environment;
}

} // namespace

CurlSetup curlSetup(ExitWatchFactory watchExits, const EnvironmentVariables& variables,
                    QString executable) {
    return {std::move(watchExits), std::move(executable), trustStoreIn(variables),
            withoutProxy(variables), curlEnvironment(variables)};
}

} // namespace orvanta
