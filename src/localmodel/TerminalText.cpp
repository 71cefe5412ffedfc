#include "localmodel/TerminalText.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QChar escape = u'\x1b';
constexpr QChar bell = u'\a';
constexpr qsizetype longestKnownParameters = 8;

/// How many bytes at the end are the beginning of a character whose rest is missing; at most three.
qsizetype incompleteEnd(QByteArrayView bytes)
{
    constexpr qsizetype longestBeginning = 3;
    for (qsizetype length = 1; length <= std::min(longestBeginning, bytes.size()); ++length) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - length]);
        if ((byte & 0xc0U) == 0x80U)
            continue; // goes on with a character
        qsizetype whole = 1;
        if (byte >= 0xf0U)
            whole = 4;
        else if (byte >= 0xe0U)
            whole = 3;
        else if (byte >= 0xc0U)
            whole = 2;
        return length < whole ? length : 0;
    }
    return 0;
}

bool isControl(QChar letter)
{
    return letter < u' ' || (letter >= u'\x7f' && letter <= u'\x9f');
}

} // namespace

QString TerminalText::append(QByteArrayView bytes)
{
    // The toolkit's decoder loses letters where what is no character is cut.
    const QByteArray whole = std::exchange(m_incomplete, {}) + bytes.toByteArray();
    const qsizetype incomplete = incompleteEnd(whole);
    m_incomplete = whole.last(incomplete);
    const QString letters = QString::fromUtf8(QByteArrayView(whole).chopped(incomplete));
    QString text;
    text.reserve(letters.size());
    for (const QChar letter : letters)
        take(letter, text);
    return text;
}

void TerminalText::take(QChar letter, QString &text)
{
    switch (m_state) {
    case State::text:
        return takeText(letter, text);
    case State::escape:
        return takeEscape(letter, text);
    case State::escapeIntermediate:
        if (letter < u' ' || letter > u'/')
            m_state = State::text;
        return;
    case State::sequence:
        return takeSequence(letter, text);
    case State::string:
    case State::stringEscape:
        return takeString(letter, text);
    }
}

void TerminalText::takeText(QChar letter, QString &text)
{
    m_parameters.clear();
    if (letter == escape)
        m_state = State::escape;
    else if (letter == u'\x9b')
        m_state = State::sequence;
    else if (letter == u'\x90' || letter == u'\x98' || (letter >= u'\x9d' && letter <= u'\x9f'))
        m_state = State::string;
    else if (isLineEnd(letter) || letter == u'\t' ||
             (!isControl(letter) && letter != QChar::ReplacementCharacter))
        text += letter;
}

void TerminalText::takeEscape(QChar letter, QString &text)
{
    if (letter == u'[') {
        m_state = State::sequence;
    } else if (letter == u']' || letter == u'P' || letter == u'X' || letter == u'^' || letter == u'_') {
        m_state = State::string;
    } else if (letter >= u' ' && letter <= u'/') {
        m_state = State::escapeIntermediate;
    } else {
        m_state = State::text;
        if (isControl(letter))
            takeText(letter, text);
    }
}

void TerminalText::takeSequence(QChar letter, QString &text)
{
    if (letter >= u' ' && letter <= u'?') {
        if (m_parameters.size() < longestKnownParameters)
            m_parameters += letter;
        return;
    }
    m_state = State::text;
    if (letter >= u'@' && letter <= u'~')
        endSequence(letter, text);
    else
        takeText(letter, text); // broken off
}

void TerminalText::endSequence(QChar letter, QString &text)
{
    if (m_parameters == "?2026"_L1)
        m_inFrame = letter == u'h';
    else if (u"ABCDEFGHJKSTdf"_s.contains(letter))
        text += u'\r';
}

void TerminalText::takeString(QChar letter, QString &text)
{
    const bool afterEscape = m_state == State::stringEscape;
    m_state = State::string;
    if (letter == escape) {
        m_state = State::stringEscape;
    } else if (letter == bell || letter == u'\x9c' || (afterEscape && letter == u'\\')) {
        m_state = State::text;
    } else if (isLineEnd(letter) || letter == u'\x18' || letter == u'\x1a') {
        // One that was never ended must not swallow all that follows.
        m_state = State::text;
        takeText(letter, text);
    } else if (afterEscape) {
        m_state = State::escape;
        takeEscape(letter, text);
    }
}

} // namespace morvane
