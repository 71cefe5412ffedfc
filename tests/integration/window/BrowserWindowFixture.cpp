#include "BrowserWindowFixture.h"

#include "browser/window/BrowserTabButton.h"

#include <map>

namespace morvane {

QStringList BrowserWindowFixture::tabs() const
{
    std::map<int, QString> byPlace;
    for (const auto *tab : window->findChildren<BrowserTabButton *>())
        byPlace[tab->x()] = tab->accessibleName();
    QStringList names;
    for (const auto &[place, name] : byPlace)
        names.append(name);
    return names;
}

} // namespace morvane
