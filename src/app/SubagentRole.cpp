#include "app/SubagentRole.h"

using namespace Qt::StringLiterals;

namespace morvane {

SubagentRole subagentRole(const QString &name)
{
    const QString lower = name.toLower();
    if (lower == "researcher"_L1)
        return SubagentRole::researcher;
    if (lower == "implementer"_L1)
        return SubagentRole::implementer;
    if (lower == "verifier"_L1)
        return SubagentRole::verifier;
    return SubagentRole::general;
}

QString displayName(SubagentRole role)
{
    switch (role) {
    case SubagentRole::researcher:
        return u"Researcher"_s;
    case SubagentRole::implementer:
        return u"Implementer"_s;
    case SubagentRole::verifier:
        return u"Verifier"_s;
    case SubagentRole::general:
        return u"Assistant"_s;
    }
    Q_UNREACHABLE();
}

QString systemPrompt(SubagentRole role)
{
    switch (role) {
    case SubagentRole::researcher:
        return u"You are a Researcher subagent. Your job is to investigate and report back. You can read "
               "files, list folders, search code, search the web, and fetch pages. Do not modify any "
               "files or change the computer. Work until you have enough information, then return a "
               "clear, complete written report to the main agent. Be specific: include file paths, line "
               "numbers, and exact quotes where useful."_s;
    case SubagentRole::implementer:
        return u"You are an Implementer subagent. Your job is to build or modify things on the computer. "
               "First read the relevant files to understand the situation, then make changes using the "
               "write or edit tools, and run commands to check your work. For any action that changes "
               "the computer, you will be asked to get approval; request it and wait. When you are "
               "done, return a concise summary of exactly what you changed and how to verify it."_s;
    case SubagentRole::verifier:
        return u"You are a Verifier subagent. Your job is to check that work is correct and free of "
               "issues. Run builds and checks, read the changed files, and confirm each requirement. "
               "Report PASS or FAIL for each item, list any errors or warnings with file names, and "
               "suggest fixes. Do not fix things yourself unless explicitly asked — just report clearly."_s;
    case SubagentRole::general:
        return u"You are a General subagent working under a controlling agent. Complete the task given "
               "to you using your tools, then return a clear final summary of what you did and what you "
               "found. Be concise and accurate."_s;
    }
    Q_UNREACHABLE();
}

} // namespace morvane
