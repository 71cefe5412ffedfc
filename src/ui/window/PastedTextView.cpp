#include "ui/window/PastedTextView.h"

#include "ui/controls/NoteLabel.h"
#include "ui/sheets/LongTextField.h"

#include <QDialogButtonBox>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// UTF-16 units. A document of many lines takes a hundred times the memory of its text.
constexpr qsizetype longestShown = 2'000'000;
constexpr QSize initialSize(640, 480);

} // namespace

PastedTextView::PastedTextView(const QString &text, QWidget *parent) : QDialog(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(u"Pasted Text"_s);
    auto *field = new LongTextField;
    field->setAccessibleName(windowTitle());
    field->setContent(text.first(std::min(text.size(), longestShown)), LongTextField::Style::prose,
                      LongTextField::Hidden::asTheyStand);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *column = new QVBoxLayout(this);
    column->addWidget(field, 1);
    if (text.size() > longestShown)
        column->addWidget(new NoteLabel(u"This is the beginning. The whole text is sent."_s));
    column->addWidget(buttons);
    field->setFocus();
    resize(initialSize);
}

} // namespace morvane
