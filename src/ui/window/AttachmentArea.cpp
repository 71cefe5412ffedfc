#include "ui/window/AttachmentArea.h"

#include "app/PendingAttachments.h"
#include "base/LabelText.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/SymbolLabel.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/AttachmentChips.h"

#include <QEvent>
#include <QProgressBar>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize progressSize{80, 8};
constexpr int areaSpacing = 6;
/// Characters of why a file was not read.
constexpr qsizetype longestFailure = 300;

/// Widgets side by side; the last takes the room. Hidden at first.
QWidget *makeRow(const QList<QWidget *> &widgets)
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    for (QWidget *widget : widgets)
        layout->addWidget(widget, widget == widgets.constLast() ? 1 : 0);
    row->hide();
    return row;
}

QWidget *makeVisionWarning()
{
    auto *text =
        new NoteLabel(u"The current model can't see images — switch to a vision model to send them."_s,
                      NoteLabel::Tone::warning);
    text->setAccessibleName(
        u"Warning: the current model can't see images. Switch to a vision model to send them."_s);
    auto *symbol = new SymbolLabel(Symbol::octagonExclamation, &ThemeColors::warning);
    QWidget *row = makeRow({symbol, text});
    row->layout()->setAlignment(symbol, Qt::AlignTop);
    return row;
}

} // namespace

AttachmentArea::AttachmentArea(PendingAttachments &attachments, QWidget *parent)
    : QScrollArea(parent), m_attachments(attachments), m_content(new QWidget), m_chips(new AttachmentChips),
      m_failures(new NoteLabel({}, NoteLabel::Tone::error)), m_warning(makeVisionWarning()),
      m_progress(new QProgressBar),
      m_processing(makeRow({m_progress, new NoteLabel(u"Processing attachment"_s)}))
{
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setFixedSize(progressSize);
    m_failures->setSymbol(Symbol::octagonExclamation);
    m_failures->hide();
    auto *column = new QVBoxLayout(m_content);
    column->setContentsMargins({});
    column->setSpacing(areaSpacing);
    for (QWidget *part :
         {static_cast<QWidget *>(m_chips), static_cast<QWidget *>(m_failures), m_warning, m_processing})
        column->addWidget(part);
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_content->installEventFilter(this);
    setWidget(m_content);
    viewport()->setAutoFillBackground(false);
    m_content->setAutoFillBackground(false);
    fitHeight();

    connect(m_chips, &AttachmentChips::removeRequested, &attachments, &PendingAttachments::removeAttachment);
    connect(m_chips, &AttachmentChips::focusLeft, this, &AttachmentArea::focusLeft);
    connect(&attachments, &PendingAttachments::attachmentsChanged, this, &AttachmentArea::showAttachments);
    connect(&attachments, &PendingAttachments::processingCountChanged, this, &AttachmentArea::showProcessing);
    connect(&attachments, &PendingAttachments::failuresChanged, this, &AttachmentArea::showFailures);
    connect(&attachments, &PendingAttachments::modelChanged, this,
            [this] { m_warning->setVisible(m_attachments.hasUnseenImage()); });
}

QList<QWidget *> AttachmentArea::buttons() const
{
    return m_chips->buttons();
}

void AttachmentArea::setHeightLimit(int limit)
{
    if (std::exchange(m_heightLimit, limit) != limit)
        fitHeight();
}

void AttachmentArea::fitHeight()
{
    const QLayout &layout = *m_content->layout();
    const int wanted = layout.hasHeightForWidth() ? layout.totalHeightForWidth(viewport()->width())
                                                  : layout.totalSizeHint().height();
    setFixedHeight(std::min(wanted, m_heightLimit));
}

bool AttachmentArea::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_content && event->type() == QEvent::LayoutRequest)
        fitHeight();
    // A scroll area follows the focus only where it came from within.
    if (watched != m_content && event->type() == QEvent::FocusIn) {
        auto *button = static_cast<QWidget *>(watched);
        m_chips->ensureWidgetVisible(button);
        ensureWidgetVisible(button);
    }
    return QScrollArea::eventFilter(watched, event);
}

void AttachmentArea::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    fitHeight();
}

void AttachmentArea::showAttachments()
{
    m_chips->setAttachments(m_attachments.attachments());
    for (QWidget *button : m_chips->buttons())
        button->installEventFilter(this);
    m_warning->setVisible(m_attachments.hasUnseenImage());
    Q_EMIT buttonsChanged();
}

void AttachmentArea::showFailures()
{
    QStringList lines;
    for (const QString &failure : m_attachments.failures())
        lines += labelText(failure.simplified(), longestFailure);
    if (const int older = m_attachments.olderFailures(); older > 0)
        lines += older == 1 ? u"1 more file was not attached."_s
                            : u"%1 more files were not attached."_s.arg(older);
    m_failures->setText(lines.join(u'\n'));
    m_failures->setVisible(!lines.isEmpty());
}

void AttachmentArea::showProcessing()
{
    const int count = m_attachments.processingCount();
    m_processing->setVisible(count > 0);
    m_progress->setAccessibleName(u"Processing %1 attachments"_s.arg(count));
}

} // namespace morvane
