// SPDX-License-Identifier: MIT
#include "desktop/person.h"

#include <QProcess>

namespace orvanta::tests {

bool Person::act(const QStringList& words) const {
    QProcess tool;
    tool.setProcessEnvironment(m_environment);
    tool.start(QStringLiteral("xdotool"), words);
    return tool.waitForFinished(5'000) && tool.exitStatus() == QProcess::NormalExit &&
           tool.exitCode() == 0;
}

bool Person::pointAt(QPoint place) const {
    return act(
        {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
}

bool Person::click(Button button, QPoint place) const {
    return pointAt(place) &&
           act({QStringLiteral("click"), QString::number(static_cast<int>(button))});
}

bool Person::press(const QString& key) const {
    return act({QStringLiteral("key"), key});
}

} // namespace orvanta::tests
