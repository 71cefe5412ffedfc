#include "browser/engine/PageDialogSheet.h"

#include "base/Text.h"
#include "browser/pages/PageText.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr int sheetWidth = 420;
constexpr int linesShown = 5;
/// Of a text to be changed, which is laid out in one line.
constexpr qsizetype longestDefault = 10'000;

} // namespace

PageDialogSheet::PageDialogSheet(QWidget *window, const QString &speaker, const QString &text,
                                 Refusal refusal)
    : QDialog(window), m_column(new QVBoxLayout)
{
    // A page of the web has a site; what has none is a frame in it.
    const QString title = speaker.isEmpty() ? u"An embedded page says"_s : pageText(speaker) + u" says"_s;
    const QString shown = pageLines(text);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleDescription(shown);
    auto *outer = new QVBoxLayout(this);
    auto *heading = new QLabel(title);
    heading->setTextFormat(Qt::PlainText);
    heading->setWordWrap(true);
    auto *words = new QPlainTextEdit(shown);
    words->setReadOnly(true);
    words->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    words->setTabChangesFocus(true);
    words->setAccessibleName(title);
    words->setFixedHeight(words->fontMetrics().lineSpacing() * linesShown + 2 * words->frameWidth());
    words->setMinimumWidth(sheetWidth);
    outer->addWidget(heading);
    outer->addWidget(words);
    m_lastControl = words;
    outer->addLayout(m_column);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    if (refusal == Refusal::cancel)
        buttons->addButton(QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    outer->addWidget(buttons);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    buttons->button(QDialogButtonBox::Ok)->setFocus();
}

QLineEdit *PageDialogSheet::addField(const QString &name, const QString &text)
{
    const bool isFirst = !findChild<QLineEdit *>();
    auto *label = new QLabel(name);
    label->setVisible(!name.isEmpty());
    auto *field = new QLineEdit(
        firstCharacters(text.left(2 * longestDefault), longestDefault)); // what is left goes back as it is
    const QString question = pageText(accessibleDescription());
    field->setAccessibleName(!name.isEmpty() ? name : question.isEmpty() ? windowTitle() : question);
    label->setBuddy(field);
    m_column->addWidget(label);
    append(field);
    if (isFirst)
        field->setFocus();
    return field;
}

QString PageDialogSheet::inOneLine() const
{
    return pageText(windowTitle() + u": "_s + accessibleDescription());
}

QCheckBox *PageDialogSheet::addSilence()
{
    auto *silence = new QCheckBox(u"Do not let this page ask again"_s);
    silence->setObjectName(u"silence"_s);
    append(silence);
    return silence;
}

void PageDialogSheet::append(QWidget *control)
{
    m_column->addWidget(control);
    setTabOrder(m_lastControl, control); // as they are seen
    m_lastControl = control;
}

} // namespace morvane
