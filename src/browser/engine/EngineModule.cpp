#include "browser/engine/EngineFactory.h"
#include "browser/engine/Sandbox.h"
#include "browser/pages/ProxyFlags.h"

#include <QCoreApplication>
#include <QFile>
#include <QOpenGLContext>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

// Of the toolkit, which sets it by itself only before the application object, for programs that draw with
// OpenGL from their start: that costs 14 MB.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);

namespace morvane {
namespace {

/// The engine draws where the windows do, by a context that all of them share. It lasts as long as the
/// application. Where there is no OpenGL, or no driver for it, the processor draws: pages would end the
/// program otherwise.
void shareDrawing()
{
    if (QOpenGLContext::globalShareContext())
        return;
    auto *const context = new QOpenGLContext(QCoreApplication::instance());
    if (!context->create())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    qt_gl_set_global_share_context(context); // which it asks for its form in any case
}

/// Why keys could not be understood here, as sandboxProblem() tells why pages could not be kept. The layouts
/// come with every X server, which may be another computer's.
QString layoutProblem()
{
    const QString layouts = qEnvironmentVariable("XKB_CONFIG_ROOT", u"/usr/share/X11/xkb"_s);
    if (QFile::exists(layouts + u"/rules/evdev"_s))
        return {};
    return u"the built-in browser needs the descriptions of keyboard layouts. On Debian the package xkb-data has them."_s;
}

QByteArray engineFlags(const EngineOptions &options)
{
    QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    if (options.prefersDark)
        flags += " --blink-settings=preferredColorScheme=0";
    if (options.isHeard)
        flags += " --force-renderer-accessibility";
    return flags + proxyFlags(QProcessEnvironment::systemEnvironment());
}

/// The engine is told some things by the environment only. What Morvane starts later does not hear of it.
class EngineVariable {
public:
    EngineVariable(const char *name, const QByteArray &value) : m_name(name), m_before(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~EngineVariable()
    {
        if (m_before.isEmpty())
            qunsetenv(m_name);
        else
            qputenv(m_name, m_before);
    }
    EngineVariable(const EngineVariable &) = delete;
    EngineVariable &operator=(const EngineVariable &) = delete;

private:
    const char *m_name;
    QByteArray m_before;
};

} // namespace
} // namespace morvane

extern "C" Q_DECL_EXPORT void morvaneBrowserEngine(const morvane::EngineOptions &options,
                                                   morvane::BrowserEngine &engine)
{
    for (const QString &problem : {morvane::sandboxProblem(), morvane::layoutProblem()}) {
        if (!problem.isEmpty()) {
            engine = std::unexpected(problem);
            return;
        }
    }
    morvane::shareDrawing();
    const morvane::EngineVariable flags("QTWEBENGINE_CHROMIUM_FLAGS", morvane::engineFlags(options));
    // A screen reader that starts later finds the pages, too.
    const morvane::EngineVariable accessibility("QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY", "1");
    engine = std::make_unique<morvane::EngineFactory>(options);
}
