#include "browser/pages/BrowserEngine.h"

#include "browser/pages/Log.h"

#include <QFileInfo>
#include <QLibrary>

using namespace Qt::StringLiterals;

namespace morvane {

BrowserEngine loadBrowserEngine(const QString &modulePath, const EngineOptions &options)
{
    if (!QFileInfo::exists(modulePath))
        return std::unexpected(u"the built-in browser is not part of this installation."_s);
    QLibrary module(modulePath);
    // What it brings has objects that last as long as the program.
    module.setLoadHints(QLibrary::PreventUnloadHint);
    const auto start = reinterpret_cast<StartBrowserEngine>(module.resolve("morvaneBrowserEngine"));
    if (!start) {
        qCWarning(pagesLog) << "the module with the web engine could not be loaded";
        return std::unexpected(
            u"the Qt WebEngine libraries that the built-in browser needs are missing. On Debian the package libqt6webenginewidgets6 has them."_s);
    }
    BrowserEngine engine;
    start(options, engine);
    return engine;
}

} // namespace morvane
