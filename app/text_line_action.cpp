// SPDX-License-Identifier: MIT
#include "app/text_line_action.h"

#include <QMenu>
#include <QPainter>
#include <QStyleOptionMenuItem>

#include <algorithm>

namespace orvanta {
namespace {

/// Weaker than the commands, yet easier to read than what is disabled.
constexpr float kSecondaryOpacity = 0.65F;

QPalette secondary(QPalette palette) {
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        QColor colour = palette.color(QPalette::Active, role);
        colour.setAlphaF(kSecondaryOpacity);
        palette.setColor(role, colour);
    }
    return palette;
}

/// Has the style draw each line as it draws the menu's other entries, so that all texts begin at
/// the same edge. Reads everything from the action whenever it is asked, so that it has nothing to
/// keep in step.
class TextLine : public QWidget {
public:
    TextLine(const QAction& action, QMenu& menu) : QWidget(&menu), m_action(action), m_menu(menu) {}

    QSize sizeHint() const override {
        const QStringList lines = this->lines();
        QSize size;
        for (const QString& line : lines) {
            size = size.expandedTo(sizeOf(optionFor(line)));
        }
        const int further = static_cast<int>(lines.size()) - 1;
        return size.grownBy({0, 0, 0, further * lineSpacing()});
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        int top = 0;
        for (const QString& line : lines()) {
            QStyleOptionMenuItem option = optionFor(line);
            option.rect = QRect(0, top, width(), sizeOf(option).height());
            // Some styles fill what they draw on.
            painter.setClipRect(option.rect.adjusted(0, top > 0 ? marginOf(option) : 0, 0, 0));
            style()->drawControl(QStyle::CE_MenuItem, &option, &painter, &m_menu);
            top += lineSpacing();
        }
    }

private:
    QStringList lines() const { return m_action.text().split(u'\n'); }
    QFont lineFont() const { return m_action.font().resolve(m_menu.font()); }
    int lineSpacing() const { return QFontMetrics(lineFont()).lineSpacing(); }

    QStyleOptionMenuItem optionFor(const QString& line) const {
        const QList<QAction*> all = m_menu.actions();
        QStyleOptionMenuItem option;
        option.initFrom(&m_menu);
        option.state = QStyle::State_Enabled | QStyle::State_Active;
        option.palette = m_action.font().bold() ? m_menu.palette() : secondary(m_menu.palette());
        option.palette.setCurrentColorGroup(QPalette::Active);
        option.font = lineFont();
        option.fontMetrics = QFontMetrics(option.font);
        option.menuHasCheckableItems = std::any_of(
            all.begin(), all.end(), [](const QAction* action) { return action->isCheckable(); });
        option.menuRect = m_menu.rect();
        option.text = QString(line).replace(u'&', QLatin1String("&&"));
        return option;
    }

    /// As high as the menu makes its other entries.
    QSize sizeOf(const QStyleOptionMenuItem& option) const {
        const QSize text =
            option.fontMetrics
                .boundingRect(QRect(), Qt::TextSingleLine | Qt::TextShowMnemonic, option.text)
                .size();
        const int height = std::max(option.fontMetrics.height(), m_menu.fontMetrics().height());
        return style()->sizeFromContents(QStyle::CT_MenuItem, &option, {text.width(), height},
                                         &m_menu);
    }

    /// Between the upper edge and the text.
    int marginOf(const QStyleOptionMenuItem& option) const {
        return (sizeOf(option).height() - option.fontMetrics.height()) / 2;
    }

    const QAction& m_action;
    const QMenu& m_menu;
};

} // namespace

QWidget* TextLineAction::createWidget(QWidget* parent) {
    auto* const menu = qobject_cast<QMenu*>(parent);
    return menu ? new TextLine(*this, *menu) : nullptr;
}

} // namespace orvanta
