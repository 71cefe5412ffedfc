#include "tools/ToolRecords.h"

#include "tools/ToolArguments.h"
#include "tools/reminders/ReminderStore.h"

using namespace Qt::StringLiterals;

namespace morvane {

QList<ToolRecord> reminderRecords()
{
    using enum ParameterKind;
    using enum Presence;
    return {
        {.declaration = declareTool(
             "set_reminder",
             "Schedule a reminder for the user. It will fire later with a sound and a notification, even if "
             "the app is not open. Use this whenever the user asks to be reminded of something.",
             {{"message", string, required, "What to remind the user about, for example: time to stretch."},
              {"minutes", number, required,
               "How many minutes from now the reminder should fire. Fractions are allowed, for example 0.5 "
               "for 30 seconds."}}),
         .handler = [](ToolServices services, SharedJsonObject arguments) -> Task<ToolResult> {
             co_return co_await services.reminders.setReminder(
                 stringArgument(arguments.get(), "message"),
                 numberArgument(arguments.get(), "minutes").value_or(1));
         }},
        {.declaration = declareTool("list_reminders", "List the reminders that are currently scheduled."),
         .handler = [](ToolServices services, SharedJsonObject) -> Task<ToolResult> {
             co_return co_await services.reminders.listReminders();
         }},
        {.declaration = declareTool(
             "cancel_reminder", "Cancel a scheduled reminder by its id. Use list_reminders to see the ids.",
             {{"id", string, required, "The id of the reminder to cancel, or any unique prefix of it."}}),
         .handler = [](ToolServices services, SharedJsonObject arguments) -> Task<ToolResult> {
             co_return co_await services.reminders.cancelReminder(stringArgument(arguments.get(), "id"));
         }},
    };
}

} // namespace morvane
