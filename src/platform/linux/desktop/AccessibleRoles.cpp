#include "platform/linux/desktop/AccessibleRoles.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

// Numbers of the accessibility protocol.
constexpr uint32_t textRole = 61;
constexpr uint32_t entryRole = 79;
constexpr uint32_t spinButtonRole = 52;
constexpr uint32_t terminalRole = 60;

bool isField(uint32_t role)
{
    return role == textRole || role == entryRole || role == passwordRole || role == spinButtonRole ||
           role == terminalRole;
}

} // namespace

QString accessibleRoleName(uint32_t role, bool isMultiLine)
{
    switch (role) {
    case 7: // check box
        return u"AXCheckBox"_s;
    case 8:  // check menu item
    case 33: // menu, which is pressed to open it
    case 35: // menu item
    case 45: // radio menu item
    case 59: // tear-off menu item
        return u"AXMenuItem"_s;
    case 11: // combo box
        return u"AXComboBox"_s;
    case 37: // page tab
        return u"AXTabGroup"_s;
    case passwordRole:
        return u"AXTextField"_s;
    case 43: // button
    case 62: // toggle button
        return u"AXButton"_s;
    case 44: // radio button
        return u"AXRadioButton"_s;
    case 51: // slider
        return u"AXSlider"_s;
    case spinButtonRole:
        return u"AXIncrementor"_s;
    case terminalRole:
        return u"AXTextArea"_s;
    case textRole:
    case entryRole:
        return isMultiLine ? u"AXTextArea"_s : u"AXTextField"_s;
    case 88: // link
        return u"AXLink"_s;
    case 129: // menu button
        return u"AXMenuButton"_s;
    case 29:  // label
    case 116: // static text
    case 73:  // paragraph
        return u"AXStaticText"_s;
    case 27: // image
    case 26: // icon
        return u"AXImage"_s;
    case 32: // list item
    case 56: // table cell
    case 91: // tree item
        return u"AXCell"_s;
    case 57: // table column header
    case 10: // column header
    case 47: // row header
        return u"AXHeader"_s;
    default:
        return u"AXGroup"_s;
    }
}

int clickAction(const QStringList &actions, uint32_t role)
{
    // An entry's "activate" is its Return key.
    if (isField(role))
        return -1;
    for (const auto &wanted : {"press"_L1, "click"_L1, "toggle"_L1, "jump"_L1, "activate"_L1, "open"_L1,
                               "showmenu"_L1, "expand or contract"_L1, "select"_L1}) {
        for (qsizetype at = 0; at < actions.size(); ++at)
            if (actions.at(at).compare(wanted, Qt::CaseInsensitive) == 0)
                return int(at);
    }
    return -1;
}

} // namespace morvane
