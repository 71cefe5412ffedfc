#include "tools/screen/AXElementInfo.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace morvane {

QString AXElementInfo::summary() const
{
    return label.isEmpty() ? role : role + u" '"_s + label + u'\'';
}

QString friendlyRole(const QString &role)
{
    static const QHash<QString, QString> names{
        {u"AXButton"_s, u"button"_s},          {u"AXLink"_s, u"link"_s},
        {u"AXCheckBox"_s, u"checkbox"_s},      {u"AXRadioButton"_s, u"radio button"_s},
        {u"AXPopUpButton"_s, u"popup menu"_s}, {u"AXMenuButton"_s, u"popup menu"_s},
        {u"AXMenuItem"_s, u"menu item"_s},     {u"AXTextField"_s, u"text field"_s},
        {u"AXSearchField"_s, u"text field"_s}, {u"AXTextArea"_s, u"text area"_s},
        {u"AXComboBox"_s, u"combo box"_s},     {u"AXSlider"_s, u"slider"_s},
        {u"AXTabGroup"_s, u"tab"_s},           {u"AXIncrementor"_s, u"stepper"_s},
    };
    if (const auto name = names.constFind(role); name != names.cend())
        return *name;
    return (role.startsWith("AX"_L1) ? role.mid(2) : role).toLower();
}

} // namespace morvane
