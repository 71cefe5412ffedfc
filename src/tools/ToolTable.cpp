#include "tools/ToolTable.h"

#include "tools/ToolRecords.h"
#include "tools/ToolServerPort.h"

#include <QHash>

namespace morvane {
namespace {

const QList<ToolRecord> &records()
{
    static const QList<ToolRecord> table = workRecords() + openingRecords() + browserRecords() +
                                           questionRecords() + inputRecords() + reminderRecords();
    return table;
}

} // namespace

const QList<AITool> &toolTable()
{
    static const QList<AITool> declarations = [] {
        QList<AITool> list;
        for (const ToolRecord &record : records())
            list.append(record.declaration);
        return list;
    }();
    return declarations;
}

const ToolRecord *findTool(const QString &name)
{
    static const QHash<QString, const ToolRecord *> byName = [] {
        QHash<QString, const ToolRecord *> table;
        for (const ToolRecord &record : records())
            table.insert(record.declaration.name, &record);
        return table;
    }();
    return byName.value(name);
}

ToolRoad toolRoad(const QString &name)
{
    if (const ToolRecord *const record = findTool(name))
        return record->road;
    return name.startsWith(toolServerPrefix) ? ToolRoad::server : ToolRoad::builtIn;
}

ApprovalRule approvalRule(const QString &name)
{
    if (const ToolRecord *const record = findTool(name))
        return record->approval;
    return name.startsWith(toolServerPrefix) ? ApprovalRule::unlessAlwaysAllowed : ApprovalRule::never;
}

} // namespace morvane
