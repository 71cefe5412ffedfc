#include "browser/engine/EngineFactory.h"
#include "browser/engine/Sandbox.h"

#include <QCoreApplication>
#include <QOpenGLContext>

using namespace Qt::StringLiterals;

// Of the toolkit, which sets it by itself only before the application object, for programs that draw with
// OpenGL from their start: that costs 14 MB.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);

namespace morvane {
namespace {

/// The engine draws where the windows do, by a context that all of them share. It lasts as long as the
/// application.
void shareDrawing()
{
    if (QOpenGLContext::globalShareContext())
        return;
    auto *const context = new QOpenGLContext(QCoreApplication::instance());
    context->create();
    qt_gl_set_global_share_context(context);
}

constexpr char flagsVariable[] = "QTWEBENGINE_CHROMIUM_FLAGS";

/// The engine is told some things by the environment only. What Morvane starts later does not hear of it.
class EngineFlags {
public:
    explicit EngineFlags(const EngineOptions &options) : m_before(qgetenv(flagsVariable))
    {
        QByteArray flags = m_before;
        if (options.prefersDark)
            flags += " --blink-settings=preferredColorScheme=0";
        if (options.isHeard)
            flags += " --force-renderer-accessibility";
        qputenv(flagsVariable, flags);
    }
    ~EngineFlags()
    {
        if (m_before.isEmpty())
            qunsetenv(flagsVariable);
        else
            qputenv(flagsVariable, m_before);
    }
    EngineFlags(const EngineFlags &) = delete;
    EngineFlags &operator=(const EngineFlags &) = delete;

private:
    QByteArray m_before;
};

} // namespace
} // namespace morvane

extern "C" Q_DECL_EXPORT void morvaneBrowserEngine(const morvane::EngineOptions &options,
                                                   morvane::BrowserEngine &engine)
{
    if (const QString problem = morvane::sandboxProblem(); !problem.isEmpty()) {
        engine = std::unexpected(problem);
        return;
    }
    morvane::shareDrawing();
    const morvane::EngineFlags flags(options);
    engine = std::make_unique<morvane::EngineFactory>(options);
}
