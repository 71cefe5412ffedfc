#include "ui/window/DraftPastePlace.h"

#include "async/OffMain.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/FileDropFilter.h"

#include <QMimeData>
#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace morvane {

DraftPastePlace::DraftPastePlace(ComposerEdit &edit, const QTextCursor &place)
    : m_edit(&edit), m_at(place), m_selection(place), m_revision(edit.document()->revision())
{
    m_at.clearSelection();
    m_at.setKeepPositionOnInsert(true);
}

QWidget *DraftPastePlace::field() const
{
    return m_edit && !m_edit->isReadOnly() ? m_edit.data() : nullptr;
}

Task<void> DraftPastePlace::prepare(PasteContent content)
{
    if (FoldedTexts::isTooLong(content.text.size()))
        m_fold = co_await runOffMain([text = content.text] { return FoldedTexts::fold(text); });
}

QTextCursor DraftPastePlace::place() const
{
    if (m_edit->document()->revision() == m_revision)
        return m_selection;
    // Its other end has gone on with what was typed here.
    QTextCursor here(m_edit->document());
    here.setPosition(m_at.position());
    return here;
}

void DraftPastePlace::insert(const PasteContent &content)
{
    QMimeData data;
    if (!content.uriList.isEmpty())
        data.setData(u"text/uri-list"_s, content.uriList);
    if (!content.text.isEmpty())
        data.setText(content.text);
    if (!content.picture.isEmpty())
        data.setData(u"image/"_s + content.pictureFormat, content.picture);
    if (m_fold && FileDropFilter::filesOf(&data).isEmpty())
        m_edit->insertFold(place(), *m_fold);
    else if (!data.formats().isEmpty())
        m_edit->insertPasted(data, place());
}

} // namespace morvane
