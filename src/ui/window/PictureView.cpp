#include "ui/window/PictureView.h"

#include "async/Scheduler.h"
#include "attachments/AttachmentService.h"
#include "base/LabelText.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize firstSize{640, 520};
constexpr QSize smallestPicture{120, 90};
/// Characters of a file's name in the title.
constexpr qsizetype longestTitle = 120;

} // namespace

PictureView::PictureView(const ChatAttachment &picture, Scheduler &scheduler, AttachmentService &service,
                         QWidget *parent)
    : QDialog(parent), m_label(new QLabel(u"Reading the picture…"_s))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(labelText(picture.filename, longestTitle));
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setMinimumSize(smallestPicture);
    m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setIcon({}); // as every other button
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *column = new QVBoxLayout(this);
    column->addWidget(m_label, 1);
    column->addWidget(buttons);
    resize(firstSize.boundedTo(parent->size()));
    scheduler.spawn(read(this, &service, picture.data.value_or(QByteArray())));
}

Task<void> PictureView::read(QPointer<PictureView> self, AttachmentService *service, QByteArray data)
{
    const QImage image = co_await service->picture(std::move(data), PictureSize::preview);
    if (self)
        self->take(image);
}

void PictureView::take(const QImage &image)
{
    if (image.isNull()) {
        m_label->setText(u"The picture cannot be read."_s);
        return;
    }
    m_picture = QPixmap::fromImage(image);
    m_label->setAccessibleName(u"Picture "_s + windowTitle());
    fit();
}

void PictureView::fit()
{
    if (m_picture.isNull())
        return;
    const qreal ratio = devicePixelRatioF();
    const QSize room = m_label->size() * ratio;
    QPixmap shown = m_picture;
    if (shown.width() > room.width() || shown.height() > room.height())
        shown = shown.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    shown.setDevicePixelRatio(ratio);
    m_label->setPixmap(shown);
}

void PictureView::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    fit();
}

} // namespace morvane
