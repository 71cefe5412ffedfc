#include "model/Reminder.h"

#include "base/Json.h"
#include "base/Uuid.h"

namespace morvane {

namespace {

namespace json = boost::json;

std::optional<Reminder> reminderFromJson(const json::value &value)
{
    if (!value.is_object())
        return std::nullopt;
    const auto idText = stringMember(value.get_object(), "id");
    const auto id = idText ? uuidFromText(*idText) : std::nullopt;
    const auto message = stringMember(value.get_object(), "message");
    const auto fireDate = numberMember(value.get_object(), "fireDate");
    if (!id || !message || !fireDate)
        return std::nullopt;
    return Reminder{.id = *id, .message = *message, .fireDate = *fireDate};
}

} // namespace

QByteArray remindersToJson(const QList<Reminder> &reminders)
{
    json::array array;
    array.reserve(static_cast<std::size_t>(reminders.size()));
    for (const Reminder &reminder : reminders)
        array.push_back(json::object{{"id", jsonFromText(uuidText(reminder.id))},
                                     {"message", jsonFromText(reminder.message)},
                                     {"fireDate", reminder.fireDate}});
    return serializeJson(array);
}

QList<Reminder> remindersFromJson(QByteArrayView text)
{
    const auto value = parseJson(text);
    if (!value || !value->is_array())
        return {};
    QList<Reminder> reminders;
    for (const json::value &element : value->get_array()) {
        const auto reminder = reminderFromJson(element);
        if (!reminder)
            return {};
        reminders.append(*reminder);
    }
    return reminders;
}

} // namespace morvane
