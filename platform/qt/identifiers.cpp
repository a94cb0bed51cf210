// SPDX-License-Identifier: MIT
#include "platform/qt/identifiers.h"

#include <QUuid>

namespace orvanta {

QString QtIdentifiers::uuid() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

} // namespace orvanta
