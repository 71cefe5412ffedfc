#include "SheetsFixture.h"

#include "support/AskForPermit.h"
#include "ui/sheets/PermissionView.h"
#include "ui/sheets/QuestionView.h"

#include <QAction>
#include <QLabel>
#include <QMenuBar>
#include <QVBoxLayout>
#include <boost/json.hpp>

using namespace Qt::StringLiterals;

namespace morvane {

SheetsFixture::SheetsFixture() : window(std::make_unique<QMainWindow>())
{
    auto *central = new QWidget;
    auto *layout = new QVBoxLayout(central);
    draft = new QPlainTextEdit;
    behind = new QPushButton(u"Behind"_s);
    layout->addWidget(draft);
    layout->addWidget(behind);
    window->setCentralWidget(central);
    window->resize(760, 720);
    QObject::connect(behind, &QPushButton::clicked, behind, [this] { ++pressedBehind; });

    permission = new PermissionView(model->gate(), window.get(), [this] { return now; });
    question = new QuestionView(model->questions(), window.get(), [this] { return now; });
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    draft->setFocus();
}

SheetsFixture::~SheetsFixture()
{
    model->prepareToQuit(); // nothing else ends the waits for an answer
}

TaskHandle<std::optional<ToolPermit>> SheetsFixture::request(const AIToolCall &call)
{
    auto handle = scheduler.spawn(askForPermit(&model->gate(), call));
    // A long call is looked at off the main thread.
    EXPECT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    settle();
    return handle;
}

TaskHandle<std::optional<ToolPermit>> SheetsFixture::requestCommand(const QString &command)
{
    const boost::json::object arguments{{"command", command.toStdString()}, {"destructive", true}};
    return request(toolCall(u"run_shell_command"_s, boost::json::serialize(arguments).c_str()));
}

TaskHandle<std::optional<ToolPermit>> SheetsFixture::requestWrite()
{
    return request(toolCall(u"write_file"_s, R"({"path":"/tmp/x"})"));
}

TaskHandle<QString> SheetsFixture::ask(const QString &text, const QStringList &options)
{
    auto handle = scheduler.spawn(model->questions().askUserQuestion(text, options));
    settle();
    return handle;
}

void SheetsFixture::notice()
{
    now += std::chrono::seconds(2);
}

void SheetsFixture::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window->windowHandle(), key, modifiers);
    settle();
}

void SheetsFixture::type(const QString &text)
{
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, window->windowHandle(), Qt::Key_unknown, QString(character),
                            Qt::NoModifier);
    settle();
}

void SheetsFixture::click(QWidget *widget)
{
    const QPoint place = widget->mapTo(window.get(), widget->rect().center());
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    settle();
}

QStringList SheetsFixture::labels(const QWidget &within) const
{
    QStringList texts;
    for (const QLabel *label : within.findChildren<QLabel *>())
        if (label->isVisible())
            texts.append(label->text());
    return texts;
}

QList<QWidget *> SheetsFixture::tabStops()
{
    QList<QWidget *> stops;
    while (!stops.contains(focus())) {
        stops.append(focus());
        press(Qt::Key_Tab);
    }
    return stops;
}

} // namespace morvane
