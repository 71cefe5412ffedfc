#include "ui/sheets/ScrollingText.h"

#include "ui/controls/NoteLabel.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLocale>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QtMath>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int frame = 3;
constexpr int documentMargin = 6;
constexpr int spacing = 4;
/// The field counts a line as seen only if a pixel is left below it.
constexpr int slack = 2;
constexpr int leastRows = 3;
/// More rows than a screen holds; what lies beyond needs no exact height.
constexpr int mostRows = 200;
/// What may be laid out for it, in usual letters; the rest is estimated.
constexpr qsizetype mostMeasured = 5'000;
constexpr qreal radius = 7;

QFont fontOf(ScrollingText::Style style)
{
    QFont font = QApplication::font();
    if (style == ScrollingText::Style::prose)
        return font;
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(font.pointSizeF());
    return fixed;
}

} // namespace

ScrollingText::ScrollingText(const QString &accessibleName, QWidget *parent)
    : QWidget(parent), m_field(new LongTextField(this)), m_extent(new NoteLabel(QString()))
{
    m_extent->setParent(this);
    m_extent->hide();
    m_field->setAccessibleName(accessibleName);
    m_field->setFrameShape(QFrame::NoFrame);
    m_field->document()->setDocumentMargin(documentMargin);
    m_field->installEventFilter(this);
    connect(m_field, &LongTextField::completed, this, &ScrollingText::takeText);
    setFocusProxy(m_field);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void ScrollingText::setContent(const QString &text, Style style, Hidden hidden)
{
    m_style = style;
    updateFont();
    m_field->setContent(text, style, hidden);
    takeText();
}

void ScrollingText::takeText()
{
    m_heights.clear();
    updateGeometry();
    if (isVisible()) // or its width is none that it will have
        arrange();
}

QString ScrollingText::extent() const
{
    return m_extent->isHidden() ? QString() : m_extent->text();
}

int ScrollingText::leastHeight(int width) const
{
    const QFontMetrics metrics(fontOf(m_style));
    return leastRows * metrics.lineSpacing() + 2 * (frame + documentMargin) + extentHeight(width);
}

void ScrollingText::setHeightLimit(int height)
{
    if (m_heightLimit == height)
        return;
    m_heightLimit = height;
    updateGeometry();
    arrange();
}

int ScrollingText::naturalHeight(int width) const
{
    const auto known = m_heights.constFind(width);
    return known != m_heights.constEnd() ? *known : *m_heights.insert(width, measured(width));
}

int ScrollingText::measured(int width) const
{
    const QFont font = fontOf(m_style);
    const int room = std::max(1, width - 2 * (frame + documentMargin));
    const int line = QFontMetrics(font).lineSpacing();
    int rows = 0;
    qsizetype cost = 0;
    qsizetype letters = 0; // of the rows that are measured
    int letterRows = 0;
    qreal height = 0;
    for (QTextBlock block = m_field->document()->firstBlock(); block.isValid() && rows < mostRows;
         block = block.next()) {
        const QString text = block.text();
        const qsizetype own = layoutCost(text);
        cost += isDear(own, text.size()) ? 2 * own : own;
        if (cost > mostMeasured) {
            // As wide as those before; of the first ones, a letter is seldom wider than a line is high.
            const qsizetype full = letters > 0 ? (text.size() * letterRows + letters - 1) / letters
                                               : text.size() * line / room + 1;
            const int estimate =
                static_cast<int>(std::clamp<qsizetype>(full, 1, std::max(1, mostRows - rows)));
            rows += estimate;
            height += estimate * line;
            continue;
        }
        QTextLayout layout(text, font);
        layout.setTextOption(m_field->document()->defaultTextOption());
        layout.beginLayout();
        for (QTextLine row = layout.createLine(); row.isValid() && rows < mostRows;
             row = layout.createLine(), ++rows) {
            row.setLineWidth(room);
            height += row.height();
            letters += row.textLength();
            ++letterRows;
        }
        layout.endLayout();
    }
    // What is still to come is as wide, so that the field has its height before it has its text.
    if (const qsizetype left = m_field->left(); left > 0 && letters > 0 && rows < mostRows) {
        const qsizetype full = (left * letterRows + letters - 1) / letters;
        height += static_cast<qreal>(std::min<qsizetype>(full, mostRows - rows)) * line;
    }
    return qCeil(height) + 2 * (frame + documentMargin) + slack;
}

bool ScrollingText::isLimited(int width) const
{
    return m_heightLimit >= 0 && naturalHeight(width) > m_heightLimit;
}

int ScrollingText::extentHeight(int width) const
{
    return m_extent->heightForWidth(std::max(1, width)) + spacing;
}

int ScrollingText::heightForWidth(int width) const
{
    return isLimited(width) ? m_heightLimit : naturalHeight(width);
}

QSize ScrollingText::sizeHint() const
{
    // Its height is asked for by the width that it gets; measuring for another takes as long.
    return {40 * fontMetrics().averageCharWidth(), minimumSizeHint().height()};
}

QSize ScrollingText::minimumSizeHint() const
{
    const QFontMetrics metrics(fontOf(m_style));
    return {16 * metrics.averageCharWidth(), metrics.lineSpacing() + 2 * (frame + documentMargin)};
}

void ScrollingText::arrange()
{
    const bool overflows = isLimited(width());
    if (overflows) {
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        const QString lines =
            m_field->lines() == 1 ? u"1 line"_s : u"%1 lines"_s.arg(english.toString(m_field->lines()));
        const QString characters = u"%1 characters"_s.arg(english.toString(m_field->characters()));
        const QString rest = u"Scroll to read the rest."_s;
        m_extent->setText(m_field->isComplete() ? u"%1, %2 in all. %3"_s.arg(lines, characters, rest) : rest);
    }
    m_extent->setVisible(overflows);
    m_field->setAccessibleDescription(overflows ? m_extent->text() : QString());

    const int below = overflows ? extentHeight(width()) : 0;
    m_field->setGeometry(rect().adjusted(frame, frame, -frame, -frame - below));
    m_extent->setGeometry(0, height() - below + spacing, width(), std::max(0, below - spacing));
    // A bar that came while there was too little room takes the width that the text would fit into without
    // it.
    if (!overflows && !m_field->verticalScrollBar()->isHidden())
        m_field->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_field->setVerticalScrollBarPolicy(overflows ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAsNeeded);
}

void ScrollingText::resizeEvent(QResizeEvent *)
{
    arrange();
}

void ScrollingText::showEvent(QShowEvent *)
{
    arrange();
}

void ScrollingText::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ApplicationFontChange) {
        updateFont();
        updateGeometry();
    }
}

void ScrollingText::updateFont()
{
    m_field->setFont(fontOf(m_style));
    m_heights.clear();
}

bool ScrollingText::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        update();
    return QWidget::eventFilter(watched, event);
}

void ScrollingText::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    const QRectF around = QRectF(m_field->geometry()).adjusted(-frame, -frame, frame, frame);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.controlBorder);
    painter.setBrush(colors.surface);
    painter.drawRoundedRect(around.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    if (m_field->hasFocus())
        MorvaneStyle::drawFocusRing(painter, around, radius, palette());
}

} // namespace morvane
