#include "app/SubagentRole.h"

namespace morvane {

SubagentRole subagentRole(const QString &name)
{
    const QString lower = name.toLower();
    if (lower == QLatin1String("researcher"))
        return SubagentRole::researcher;
    if (lower == QLatin1String("implementer"))
        return SubagentRole::implementer;
    if (lower == QLatin1String("verifier"))
        return SubagentRole::verifier;
    return SubagentRole::general;
}

QString displayName(SubagentRole role)
{
    switch (role) {
    case SubagentRole::researcher:
        return QStringLiteral("Researcher");
    case SubagentRole::implementer:
        return QStringLiteral("Implementer");
    case SubagentRole::verifier:
        return QStringLiteral("Verifier");
    case SubagentRole::general:
        return QStringLiteral("Assistant");
    }
    Q_UNREACHABLE();
}

QString systemPrompt(SubagentRole role)
{
    switch (role) {
    case SubagentRole::researcher:
        return QStringLiteral(
            "You are a Researcher subagent. Your job is to investigate and report back. You can read "
            "files, list folders, search code, search the web, and fetch pages. Do not modify any "
            "files or change the computer. Work until you have enough information, then return a "
            "clear, complete written report to the main agent. Be specific: include file paths, line "
            "numbers, and exact quotes where useful.");
    case SubagentRole::implementer:
        return QStringLiteral(
            "You are an Implementer subagent. Your job is to build or modify things on the computer. "
            "First read the relevant files to understand the situation, then make changes using the "
            "write or edit tools, and run commands to check your work. For any action that changes "
            "the computer, you will be asked to get approval; request it and wait. When you are "
            "done, return a concise summary of exactly what you changed and how to verify it.");
    case SubagentRole::verifier:
        return QStringLiteral(
            "You are a Verifier subagent. Your job is to check that work is correct and free of "
            "issues. Run builds and checks, read the changed files, and confirm each requirement. "
            "Report PASS or FAIL for each item, list any errors or warnings with file names, and "
            "suggest fixes. Do not fix things yourself unless explicitly asked — just report clearly.");
    case SubagentRole::general:
        return QStringLiteral(
            "You are a General subagent working under a controlling agent. Complete the task given "
            "to you using your tools, then return a clear final summary of what you did and what you "
            "found. Be concise and accurate.");
    }
    Q_UNREACHABLE();
}

} // namespace morvane
