// SPDX-License-Identifier: MIT
#include "app/text_line_action.h"

#include <QPainter>
#include <QWidget>

namespace orvanta {
namespace {

constexpr int kVerticalMargin = 3;
/// In line with the texts of the toolkit's own entries, which leave room for an icon or mark.
constexpr int kHorizontalMargin = 28;

QMargins margins() {
    return {kHorizontalMargin, kVerticalMargin, kHorizontalMargin, kVerticalMargin};
}

/// Weaker than the commands, yet easier to read than what is disabled.
QColor secondaryColour(const QPalette& palette) {
    QColor colour = palette.color(QPalette::Active, QPalette::WindowText);
    colour.setAlphaF(0.65F);
    return colour;
}

/// Reads everything from the action whenever it is asked, so that it has nothing to keep in step.
class TextLine : public QWidget {
public:
    TextLine(const QAction& action, QWidget* parent) : QWidget(parent), m_action(action) {
        QObject::connect(&action, &QAction::changed, this, [this] { update(); });
    }

    QSize sizeHint() const override {
        return QFontMetrics(m_action.font()).size(0, m_action.text()).grownBy(margins());
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setFont(m_action.font());
        painter.setPen(m_action.font().bold()
                           ? palette().color(QPalette::Active, QPalette::WindowText)
                           : secondaryColour(palette()));
        painter.drawText(rect().marginsRemoved(margins()), 0, m_action.text());
    }

private:
    const QAction& m_action;
};

} // namespace

QWidget* TextLineAction::createWidget(QWidget* parent) {
    return new TextLine(*this, parent);
}

} // namespace orvanta
