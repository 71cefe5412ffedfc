#include "ui/controls/PickerChoices.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

void PickerChoices::setChoices(const QList<PickerChoice> &choices)
{
    beginResetModel();
    m_choices = choices;
    endResetModel();
}

int PickerChoices::rowOf(const QString &tag) const
{
    const auto place = std::find_if(m_choices.begin(), m_choices.end(),
                                    [&tag](const PickerChoice &choice) { return choice.tag == tag; });
    return place == m_choices.end() ? -1 : static_cast<int>(place - m_choices.begin());
}

bool PickerChoices::fits(int row, const QString &text) const
{
    const PickerChoice &choice = m_choices[row];
    return choice.search == PickerChoice::Search::always || choice.text.contains(text, Qt::CaseInsensitive) ||
           (!choice.detail.isEmpty() && choice.detail.startsWith(text, Qt::CaseInsensitive));
}

int PickerChoices::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_choices.size());
}

QVariant PickerChoices::data(const QModelIndex &index, int role) const
{
    if (index.row() < 0 || index.row() >= m_choices.size())
        return {};
    const PickerChoice &choice = m_choices[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return choice.text;
    case Qt::AccessibleTextRole:
        return choice.detail.isEmpty() ? choice.text : choice.text + u", "_s + choice.detail;
    case tagRole:
        return choice.tag;
    case detailRole:
        return choice.detail;
    default:
        return {};
    }
}

} // namespace morvane
