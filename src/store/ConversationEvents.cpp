#include "store/ConversationEvents.h"

#include "base/Json.h"
#include "base/JsonNumber.h"
#include "base/Uuid.h"
#include "model/ChatMessageJson.h"

#include <algorithm>

namespace morvane {

namespace {

/// Longer than every key, identifier and enumeration text, so that what is cut there can equal none of them.
constexpr std::size_t longestThatMatters = 64;

void appendCut(std::string &text, std::string_view part)
{
    text.append(part.substr(0, longestThatMatters - std::min(text.size(), longestThatMatters)));
}

constexpr std::array<bool, 256> base64Alphabet = [] {
    std::array<bool, 256> alphabet{};
    for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"))
        alphabet[static_cast<unsigned char>(c)] = true;
    return alphabet;
}();

} // namespace

const ConversationEvents::Record ConversationEvents::conversation{{{"id", Type::uuid},
                                                                   {"title", Type::title},
                                                                   {"createdAt", Type::created},
                                                                   {"updatedAt", Type::updated},
                                                                   {"messages", Type::list}}};

const ConversationEvents::Record ConversationEvents::message{
    {{"id", Type::uuid, Presence::required, Member::messageID},
     {"role", Type::role, Presence::required, Member::role},
     {"text", Type::text, Presence::required, Member::text},
     {"isStreaming", Type::flag, Presence::required, Member::isStreaming},
     {"errorMessage", Type::text, Presence::optional, Member::errorMessage},
     {"attachments", Type::list, Presence::optional, Member::attachments},
     {"date", Type::date, Presence::required, Member::date}}};

const ConversationEvents::Record ConversationEvents::attachment{
    {{"id", Type::uuid, Presence::required, Member::attachmentID},
     {"filename", Type::text, Presence::required, Member::filename},
     {"kind", Type::kind, Presence::required, Member::kind},
     {"data", Type::base64, Presence::optional, Member::data},
     {"extractedText", Type::text, Presence::required, Member::extractedText},
     {"mimeType", Type::text, Presence::optional, Member::mimeType},
     {"byteSize", Type::size, Presence::required, Member::byteSize}}};

void ConversationEvents::open(const Record &record)
{
    Frame &opened = m_frames[m_depth++];
    opened = Frame{.record = &record};
    for (std::size_t i = 0; i < record.size(); ++i)
        if (!record[i].key.empty() && record[i].presence == Presence::required)
            opened.wrong |= 1U << i;
    if (m_builder && &record == &message)
        m_builder->beginMessage();
    else if (m_builder && &record == &attachment)
        m_builder->beginAttachment();
}

ConversationEvents::Type ConversationEvents::expected() const
{
    const Field *const field = isField() ? m_frames[m_depth - 1].field : nullptr;
    return field ? field->type : Type::unknown;
}

ConversationEvents::Member ConversationEvents::member() const
{
    const Field *const field = isField() ? m_frames[m_depth - 1].field : nullptr;
    return field ? field->member : Member::none;
}

void ConversationEvents::settle(bool isRight)
{
    Frame &current = frame();
    if (!current.field)
        return;
    const unsigned bit = 1U << (current.field - current.record->data());
    current.wrong = isRight ? current.wrong & ~bit : current.wrong | bit;
}

void ConversationEvents::takeScalar(bool isRight)
{
    if (isField())
        settle(isRight);
    else if (m_passedOver == 0 && m_depth > 0)
        frame().listIsRight = false; // Every list holds objects.
}

bool ConversationEvents::on_object_begin(Error &)
{
    if (m_passedOver > 0) {
        ++m_passedOver;
    } else if (m_depth == 0) {
        open(conversation);
    } else if (frame().inList) {
        open(frame().record == &conversation ? message : attachment);
    } else {
        settle(false);
        m_passedOver = 1;
    }
    return true;
}

bool ConversationEvents::on_object_end(std::size_t, Error &)
{
    if (m_passedOver > 0) {
        --m_passedOver;
        return true;
    }
    const bool isRight = frame().wrong == 0;
    --m_depth;
    if (m_depth == 0) {
        m_isConversation = isRight;
        return true;
    }
    frame().listIsRight &= isRight;
    if (frame().record == &conversation)
        ++m_summary.messageCount;
    return true;
}

bool ConversationEvents::on_array_begin(Error &)
{
    if (m_passedOver > 0) {
        ++m_passedOver;
    } else if (expected() == Type::list) {
        frame().inList = true;
        frame().listIsRight = true;
        const bool isMessages = frame().record == &conversation;
        if (isMessages)
            m_summary.messageCount = 0;
        if (m_builder && isMessages)
            m_builder->beginMessages();
        else if (m_builder)
            m_builder->beginAttachments();
    } else {
        takeScalar(false);
        m_passedOver = 1;
    }
    return true;
}

bool ConversationEvents::on_array_end(std::size_t, Error &)
{
    if (m_passedOver > 0) {
        --m_passedOver;
    } else {
        frame().inList = false;
        settle(frame().listIsRight);
    }
    return true;
}

bool ConversationEvents::on_key_part(std::string_view part, std::size_t, Error &)
{
    if (m_passedOver == 0)
        appendCut(m_key, part);
    return true;
}

bool ConversationEvents::on_key(std::string_view part, std::size_t, Error &)
{
    if (m_passedOver > 0)
        return true;
    appendCut(m_key, part);
    const Record &record = *frame().record;
    const auto *const found = std::find_if(record.begin(), record.end(), [this](const Field &field) {
        return field.type != Type::unknown && field.key == m_key;
    });
    frame().field = found == record.end() ? nullptr : found;
    m_key.clear();
    return true;
}

void ConversationEvents::takeBase64(std::string_view part)
{
    const std::size_t digits = std::min(part.find('='), part.size());
    bool isRight = digits == 0 || m_base64Padding == 0;
    for (const char c : part.substr(0, digits))
        isRight &= base64Alphabet[static_cast<unsigned char>(c)];
    isRight &= part.find_first_not_of('=', digits) == std::string_view::npos;
    m_base64IsRight &= isRight;
    m_base64Length += part.size();
    m_base64Padding += part.size() - digits;
}

void ConversationEvents::takeText(std::string_view part)
{
    if (m_builder)
        m_builder->addText(member(), part);
    switch (expected()) {
    case Type::title:
        m_text.append(part);
        break;
    case Type::uuid:
    case Type::role:
    case Type::kind:
        appendCut(m_text, part);
        break;
    case Type::base64:
        takeBase64(part);
        break;
    default:
        break;
    }
}

bool ConversationEvents::textIsRight()
{
    switch (expected()) {
    case Type::text:
        return true;
    case Type::title:
        m_summary.title = textFromJson(m_text);
        return true;
    case Type::uuid: {
        const auto id = uuidFromText(textFromJson(m_text));
        if (id && frame().record == &conversation)
            m_summary.id = *id;
        return id.has_value();
    }
    case Type::role:
        return roleFromText(m_text).has_value();
    case Type::kind:
        return attachmentKindFromText(m_text).has_value();
    case Type::base64:
        return m_base64IsRight && m_base64Length % 4 == 0 && m_base64Padding <= 2;
    default:
        return false;
    }
}

bool ConversationEvents::on_string_part(std::string_view part, std::size_t, Error &)
{
    takeText(part);
    return true;
}

bool ConversationEvents::on_string(std::string_view part, std::size_t, Error &)
{
    takeText(part);
    const bool isRight = textIsRight();
    if (m_builder)
        m_builder->endText(member(), isRight);
    takeScalar(isRight);
    m_text.clear();
    m_base64Length = 0;
    m_base64Padding = 0;
    m_base64IsRight = true;
    return true;
}

void ConversationEvents::takeNumber(double number, std::optional<qint64> integer)
{
    m_number.clear();
    if (m_builder)
        m_builder->setNumber(member(), number, integer.value_or(0));
    switch (expected()) {
    case Type::created:
        m_summary.createdAt = number;
        takeScalar(true);
        break;
    case Type::updated:
        m_summary.updatedAt = number;
        takeScalar(true);
        break;
    case Type::date:
        takeScalar(true);
        break;
    case Type::size:
        takeScalar(integer.has_value());
        break;
    default:
        takeScalar(false);
    }
}

bool ConversationEvents::on_number_part(std::string_view part, Error &)
{
    m_number.append(part);
    return true;
}

bool ConversationEvents::on_int64(std::int64_t number, std::string_view, Error &)
{
    takeNumber(static_cast<double>(number), number);
    return true;
}

bool ConversationEvents::on_uint64(std::uint64_t number, std::string_view, Error &)
{
    takeNumber(static_cast<double>(number), integerFromJson(number));
    return true;
}

bool ConversationEvents::on_double(double approximation, std::string_view part, Error &error)
{
    const auto number = exactJsonDouble(m_number, part, approximation);
    if (!number) {
        error = boost::json::error::exponent_overflow;
        return false;
    }
    takeNumber(*number, integerFromJson(*number));
    return true;
}

bool ConversationEvents::on_bool(bool value, Error &)
{
    if (m_builder)
        m_builder->setFlag(member(), value);
    takeScalar(expected() == Type::flag);
    return true;
}

bool ConversationEvents::on_null(Error &)
{
    if (m_builder)
        m_builder->setNull(member());
    takeScalar(isField() && frame().field && frame().field->presence == Presence::optional);
    return true;
}

} // namespace morvane
