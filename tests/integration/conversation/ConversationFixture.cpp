#include "ConversationFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace morvane {

ConversationFixture::ConversationFixture()
{
    view.resize(760, 500);
}

ChatMessage ConversationFixture::message(Role role, const QString &text)
{
    ChatMessage result;
    result.id = QUuid::createUuid();
    result.role = role;
    result.text = text;
    return result;
}

QList<ChatMessage> ConversationFixture::dialogue(qsizetype count)
{
    QList<ChatMessage> messages;
    for (qsizetype i = 0; i < count; ++i) {
        const Role role = i % 2 == 0 ? Role::user : Role::assistant;
        messages.append(message(role, u"Message %1. "_s.arg(i) + u"Some words. "_s.repeated(5 + i % 40)));
    }
    return messages;
}

void ConversationFixture::startAnswer(const QString &text)
{
    ChatMessage answer = message(Role::assistant, text);
    answer.isStreaming = true;
    transcript.append(answer);
}

void ConversationFixture::show()
{
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    settle();
}

void ConversationFixture::settle()
{
    ASSERT_TRUE(QTest::qWaitFor([this] { return view.isSettled(); }));
}

void ConversationFixture::scrollUpFromBottom(int pixels)
{
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() - pixels);
}

int ConversationFixture::offset() const
{
    return view.verticalScrollBar()->value();
}

int ConversationFixture::remaining() const
{
    return view.verticalScrollBar()->maximum() - offset();
}

QString ConversationFixture::clipboard()
{
    return QApplication::clipboard()->text();
}

} // namespace morvane
