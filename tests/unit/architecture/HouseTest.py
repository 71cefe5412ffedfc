#!/usr/bin/python3
"""The house keeps its rules, and the checks of scripts/ catch whoever does not: each rule is broken here on purpose."""

import contextlib
import io
import json
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import unittest.mock
from pathlib import Path

HOUSE = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(HOUSE / "scripts"))
sys.dont_write_bytecode = True

import check  # noqa: E402
import rules  # noqa: E402

FOLDERS = """
function(morvane_folder folder)
endfunction()
morvane_folder(base BATCHES 2 LIBRARIES Qt6::Core)
morvane_folder(store BATCHES 1 DEPENDS base) # the files
morvane_folder(ui/theme DEPENDS base LIBRARIES Qt6::Widgets)
morvane_folder(ui/sheets WINDOWS DEPENDS ui_theme
  PRECOMPILE <QWidget>)
morvane_apart(reader DEPENDS base)
"""


class Tree(unittest.TestCase):
    """A small house of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.write("src/CMakeLists.txt", FOLDERS)
        for top in check.TOPS:
            (self.root / top).mkdir(exist_ok=True)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def complaints(self):
        return [f"{found.file}:{found.line}: {found.text}" for found in rules.violations(self.root)]

    def assert_complaint(self, place, words):
        found = self.complaints()
        self.assertEqual(len(found), 1, found)
        self.assertTrue(found[0].startswith(place + ":") and words in found[0], found)


class TheHouse(unittest.TestCase):
    def test_keeps_its_rules(self):
        self.assertEqual(list(rules.violations(HOUSE)), [])

    def test_is_seen_whole(self):
        folders = rules.declared_folders((HOUSE / "src" / "CMakeLists.txt").read_text())
        self.assertIn("ui/window", folders)
        self.assertIn("app", rules.reachable(folders, "ui/window"))
        self.assertNotIn("app", rules.reachable(folders, "ui/controls"))
        self.assertNotIn("ui/theme", rules.reachable(folders, "app"))
        self.assertNotIn("net", rules.reachable(folders, "store"))
        self.assertEqual(rules.reachable(folders, "attachments/reader"), {"attachments/reader", "attachments", "base"})


    def test_is_drawn_as_it_is(self):
        text = (HOUSE / "docs" / "architecture.md").read_text()
        tree, arrows = text.split("```")[1], text.split("```")[3]
        folders = rules.declared_folders((HOUSE / "src" / "CMakeLists.txt").read_text())
        drawn = {}
        for line in arrows.strip().splitlines():
            chain = [[name.strip() for name in part.strip(" {}").split(",")] for part in line.split("←") if part.strip()]
            for used, users in zip(chain, chain[1:]):
                for user in users:
                    drawn.setdefault(user, set()).update(used)

        def closure(arrows_of, name):
            seen, open_ends = set(), [name]
            while open_ends:
                current = open_ends.pop()
                if current not in seen:
                    seen.add(current)
                    open_ends += arrows_of(current)
            return seen

        for name in folders:
            self.assertEqual(closure(lambda each: drawn.get(each, ()), name),
                             closure(lambda each: folders[each].depends, name), name)
            for part in name.split("/"):
                self.assertRegex(tree, rf"\b{part}\b", name)
        self.assertLessEqual(set(drawn), set(folders))
        for name in re.findall(r"^  (\w+)/ ", tree, re.MULTILINE):
            self.assertTrue((HOUSE / "src" / name).is_dir(), name)
        for name in re.findall(r"^(\w+)/", tree, re.MULTILINE):
            self.assertTrue((HOUSE / name).is_dir(), name)

    def test_tells_whoever_looks_for_a_mistake_what_can_be_asked_for(self):
        text = (HOUSE / "docs" / "diagnosing.md").read_text()
        told = re.search(r"that has something to say: (.*?)\. ", text, re.DOTALL).group(1)
        self.assertEqual(sorted("morvane." + name for name in re.findall(r"`(?:morvane)?\.([\w.]+)`", told)),
                         sorted(category for _, category, _, _ in rules.log_categories(HOUSE)))

    def test_says_why_a_check_is_switched_off(self):
        reasons, checks = (HOUSE / ".clang-tidy").read_text().split("Checks: >")
        switched_off = re.findall(r"^  -([a-z][\w.-]+)", checks, re.MULTILINE)
        told = [name for line in re.findall(r"^#   (\S.*?)  +\S", reasons, re.MULTILINE) for name in line.split(", ")]
        self.assertEqual(sorted(told), sorted(switched_off))


class Arrows(Tree):
    def test_down_is_allowed_through_several_folders(self):
        self.write("src/base/Text.h", "#pragma once\n")
        self.write("src/ui/sheets/Sheet.cpp", '#include "base/Text.h"\n#include <QWidget>\n')
        self.assertEqual(self.complaints(), [])

    def test_up_is_found(self):
        self.write("src/base/Text.cpp", '\n#include "store/Store.h"\n')
        self.assert_complaint("src/base/Text.cpp:2", "no arrow leads to store")

    def test_from_one_subfolder_of_ui_up_to_another_is_found(self):
        self.write("src/ui/theme/Icons.cpp", '#include "ui/sheets/Sheet.h"\n')
        self.assert_complaint("src/ui/theme/Icons.cpp:1", "no arrow leads to ui/sheets")

    def test_a_program_apart_reaches_only_what_it_names(self):
        self.write("src/reader/Reader.cpp", '#include "base/Text.h"\n#include "store/Store.h"\n')
        self.assert_complaint("src/reader/Reader.cpp:2", "no arrow leads to store")

    def test_up_is_found_however_it_is_spelled(self):
        self.write("src/store/Store.h", "#pragma once\n")
        for spelled in ("<store/Store.h>", '"../store/Store.h"', '"base/../store/Store.h"', '"src/store/Store.h"'):
            self.write("src/base/Text.cpp", f"\n#include {spelled}\n")
            self.assert_complaint("src/base/Text.cpp:2", "store/Store.h")

    def test_a_header_of_the_tests_in_a_source_is_found(self):
        self.write("src/base/Text.cpp", '#include "support/FakeClock.h"\n')
        self.assert_complaint("src/base/Text.cpp:1", "no header of a declared folder")

    def test_main_knows_everything(self):
        self.write("src/main.cpp", '#include "ui/sheets/Sheet.h"\n#include <QApplication>\n')
        self.assertEqual(self.complaints(), [])

    def test_an_undeclared_folder_is_found(self):
        self.write("src/extra/Extra.cpp", "\n")
        self.assert_complaint("src/extra/Extra.cpp:1", "no folder that src/CMakeLists.txt declares")

    def test_windows_below_the_windows_are_found(self):
        for header in ("QLabel", "QtWidgets/QFrame", "QWebEngineView", "QtWebEngineWidgets/QWebEngineView", "QWindow",
                       "QScreen", "QPainter", "QGuiApplication", "QAbstractItemView", "QDialog"):
            self.write("src/store/Store.cpp", f"#include <{header}>\n")
            self.assert_complaint("src/store/Store.cpp:1", "has no windows")
        self.write("src/store/Store.cpp", "#include <QString>\n")
        self.assertEqual(self.complaints(), [])

    def test_a_comment_in_the_list_is_none_of_it(self):
        self.write("src/CMakeLists.txt", FOLDERS.replace("morvane_folder(store", "# morvane_folder(extra)\nmorvane_folder(store"))
        self.write("src/extra/Extra.cpp", "\n")
        self.assert_complaint("src/extra/Extra.cpp:1", "no folder that src/CMakeLists.txt declares")

    def test_an_unknown_arrow_and_a_circle_are_found(self):
        self.write("src/CMakeLists.txt", "morvane_folder(a DEPENDS nowhere)\n")
        self.assert_complaint("src/CMakeLists.txt:1", "which is no folder")
        self.write("src/CMakeLists.txt", "morvane_folder(a DEPENDS b)\nmorvane_folder(b DEPENDS a)\n")
        self.assertEqual(len(self.complaints()), 2)


class Sizes(Tree):
    def test_a_long_header_is_found(self):
        self.write("src/base/Text.h", "#pragma once\n" + "\n" * 159)
        self.assertEqual(self.complaints(), [])
        self.write("src/base/Text.h", "#pragma once\n" + "\n" * 160)
        self.assert_complaint("src/base/Text.h:161", "at most 160")

    def test_a_class_cut_in_two_files_is_one(self):
        self.write("src/base/Text.h", "#pragma once\nclass Text {};\n")
        self.write("src/base/Text.cpp", '#include "base/Text.h"\n' + "\n" * 250)
        self.write("src/base/Reading.cpp", '#include "base/Text.h"\n' + "\n" * 148)
        self.assertEqual(self.complaints(), [])
        self.write("src/base/Reading.cpp", '#include "base/Text.h"\n' + "\n" * 149)
        self.assert_complaint("src/base/Reading.cpp:1", "Text has 401 lines")

    def test_a_part_that_includes_another_header_first_counts_too(self):
        self.write("src/base/Text.h", "#pragma once\nclass Text {};\n")
        self.write("src/base/Text.cpp", '#include "base/Text.h"\n' + "\n" * 250)
        self.write("src/base/Reading.cpp", '#include <vector>\n#include "base/Text.h"\nint Text::read() {}\n' + "\n" * 147)
        self.assert_complaint("src/base/Reading.cpp:1", "Text has 401 lines")

    def test_a_suffix_that_nobody_looks_at_is_found(self):
        for suffix in ("c", "cc", "cxx", "hh", "hpp", "hxx", "inc", "ipp"):
            path = self.write(f"src/base/Text.{suffix}", "\n" * 500)
            self.assert_complaint(f"src/base/Text.{suffix}:1", "sources are called .cpp")
            path.unlink()

    def test_a_second_class_in_a_header_is_found(self):
        for second in ("class Other {", "class Other final : public Text {", "template <class T> class Other {", "class Other\n    : public Text {"):
            self.write("src/base/Text.h", f"#pragma once\nclass Text {{\n}};\n{second}\n}};\n")
            self.assert_complaint("src/base/Text.h:4", "one class a file")
        self.write("src/base/Text.h", "#pragma once\nclass Other;\nstruct Place {\n};\nclass TextBase {\n};\ntemplate <class T> class Text {\n"
                   "    class Inner {\n    };\n};\ntemplate <> class Text<int> {\n};\nclass Text::Next {\n};\nenum class Kind {\n    one,\n};\n")
        self.assertEqual(self.complaints(), [])

    def test_files_that_share_a_header_of_functions_are_measured_each(self):
        self.write("src/base/Records.h", "#pragma once\nvoid first();\nvoid second();\n")
        for name in ("First", "Second"):
            self.write(f"src/base/{name}.cpp", '#include "base/Records.h"\n' + "\n" * 300)
        self.assertEqual(self.complaints(), [])


class Ignored(Tree):
    def test_what_was_unpacked_in_an_ignored_folder_is_seen(self):
        subprocess.run(["git", "init", "-q"], cwd=self.root, check=True)
        (self.root / ".gitignore").write_text("inner/\n")
        source = self.write("inner/src/base/A.cpp", "\n")
        self.assertEqual(list(rules.files(self.root / "inner", "src")), [source])

    def test_what_git_ignores_is_none_of_the_house(self):
        subprocess.run(["git", "init", "-q"], cwd=self.root, check=True)
        self.write(".gitignore", "node_modules\n")
        self.write("tests/peers/node_modules/A.h", "int a();\n")
        self.assertEqual(self.complaints(), [])
        self.write("tests/peers/A.h", "int a();\n")
        self.assertEqual(len(self.complaints()), 1)

    def test_what_a_merge_lists_several_times_is_told_once(self):
        git = ["git", "-c", "user.name=Test", "-c", "user.email=test@example.invalid"]
        header = self.write("tests/support/A.h", "int a();\n")
        for command in (["init", "-q", "-b", "main"], ["add", "-A"], ["commit", "-q", "-m", "a"], ["checkout", "-q", "-b", "other"]):
            subprocess.run([*git, *command], cwd=self.root, check=True)
        for branch, text in (("other", "int b();\n"), ("main", "int c();\n")):
            subprocess.run([*git, "checkout", "-q", branch], cwd=self.root, check=True)
            header.write_text(text)
            subprocess.run([*git, "commit", "-qam", branch], cwd=self.root, check=True)
        merge = subprocess.run([*git, "merge", "-q", "other"], cwd=self.root, capture_output=True)
        self.assertEqual(merge.returncode, 1)
        self.assert_complaint("tests/support/A.h:1", "#pragma once")


class Style(Tree):
    def test_old_literals_are_found(self):
        self.write("src/base/A.cpp", 'const auto a = QStringLiteral("x");\n')
        self.assert_complaint("src/base/A.cpp:1", "QStringLiteral")
        self.write("src/base/A.cpp", 'const auto a = QLatin1String("x");\n')
        self.assert_complaint("src/base/A.cpp:1", "QLatin1String")

    def test_old_literals_are_found_in_other_clothes(self):
        for literal in ('QStringLiteral(\n    "x")', 'QStringLiteral(u"x")', 'QString("x")', 'QString::fromUtf8("x")',
                        'QString::fromLatin1("x")', 'QLatin1StringView("x")', 'QByteArrayLiteral("x")', "QLatin1Char('x')"):
            self.write("src/base/A.cpp", f"const auto a = {literal};\n")
            self.assert_complaint("src/base/A.cpp:1", "a source writes")

    def test_literals_of_names_and_in_texts_and_comments_are_none(self):
        self.write("src/base/A.cpp", 'const auto a = QLatin1String(name); // QStringLiteral("x")\n'
                   'const auto b = QStringLiteral(VERSION);\nconst auto c = R"(QStringLiteral("x"))";\n')
        self.assertEqual(self.complaints(), [])

    def test_a_namespace_opened_in_a_header_is_found(self):
        self.write("src/base/A.h", "#pragma once\nusing namespace Qt::StringLiterals;\n")
        self.assert_complaint("src/base/A.h:2", "opens no namespace")

    def test_a_capital_enumerator_is_found(self):
        self.write("tests/support/A.h", "#pragma once\nenum class Kind : int {\n    small, // Big, in a comment\n    Big = 2,\n};\n")
        self.assert_complaint("tests/support/A.h:4", "the enumerator Big")

    def test_an_enumerator_without_a_name_for_its_enum_is_found_and_no_word_of_a_value(self):
        self.write("src/base/A.cpp", "enum { Big };\nenum Kind { good = least(1, Two), fine };\n")
        self.assert_complaint("src/base/A.cpp:1", "the enumerator Big")
        self.write("src/base/A.cpp", "/* enum Kind { Big }; */\nenum Kind { two_words };\n")
        self.assert_complaint("src/base/A.cpp:2", "the enumerator two_words")

    def test_layout_that_is_switched_off_is_found(self):
        self.write("src/base/A.cpp", "// clang-format off\nint   a();\n")
        self.assert_complaint("src/base/A.cpp:1", "not switched off")

    def test_a_header_without_guard_is_found(self):
        for text in ("int a();\n", "// without #pragma once\nint a();\n"):
            self.write("bench/A.h", text)
            self.assert_complaint("bench/A.h:1", "#pragma once")

    def test_a_source_that_includes_another_header_first_is_found(self):
        self.write("src/base/A.h", "#pragma once\n")
        self.write("src/base/B.h", "#pragma once\n")
        for text in ('#include "base/B.h"\n#include "base/A.h"\n', "int a();\n"):
            self.write("src/base/A.cpp", text)
            self.assert_complaint("src/base/A.cpp:1", "its own header first")


class State(Tree):
    def test_what_outlives_every_object_is_found(self):
        for line in ("int count = 0;", "static QString name;", "inline int counter = 0;", "thread_local int depth = 0;",
                     "QHash<QString, QList<int>> known;", "std::atomic<bool> isOn{false};", "unsigned long mask = 1;",
                     "const Text *current = nullptr;", "QString Text::s_last;", "Q_GLOBAL_STATIC(Text, text)",
                     "    static int calls = 0;", "    static Text instance;", "    thread_local Text last;",
                     "    static inline int s_count = 0;"):
            self.write("src/base/A.cpp", line + "\n")
            self.assert_complaint("src/base/A.cpp:1", "no mutable globals")

    def test_constants_functions_and_names_of_types_are_none(self):
        self.write("src/base/A.cpp", "constexpr int most = 4;\nconst QString name = other();\nusing Text = QString;\n"
                   "static constexpr char letter = 1;\nint count(int of);\nQString Text::read() const\n{\n"
                   "    static const Text text;\n    static constexpr int most = 3;\n    return a;\n}\n"
                   "const char *const names[] = {};\nclass Other;\nstruct One {\n    static int of(int a);\n};\n"
                   "One &One::operator=(One &&) = default;\n")
        self.assertEqual(self.complaints(), [])


class Members(Tree):
    def test_a_private_member_without_its_prefix_is_found(self):
        for line in ("int count = 0;", "const QString name;", "QHash<QString, QList<int>> known;", "Text *current;",
                     "std::function<void(int)> done;", "Lock lock{mutex};", "mutable bool isOpen;", "char letters[4];"):
            self.write("src/base/A.h", f"#pragma once\nclass A : public B {{\npublic:\n    void run();\n\nprivate:\n"
                       f"    struct Place {{\n        int x;\n    }};\n    int m_a{{1}};\n    {line}\n}};\n")
            self.assert_complaint("src/base/A.h:11", "is called m_")

    def test_a_member_of_a_class_that_names_no_access_is_private(self):
        self.write("src/base/A.h", "#pragma once\nclass A {\n    int count = 0;\n};\n")
        self.assert_complaint("src/base/A.h:3", "is called m_")

    def test_public_fields_functions_and_locals_are_none(self):
        self.write("src/base/A.h", "#pragma once\nclass A;\nstruct Point {\n    int x = 0;\n};\nclass A {\npublic:\n"
                   "    int open = 0;\n    void run(\n        int times = 3);\n\nprivate:\n    void go(int from,\n            int to = 3);\n    A &operator=(const A &) = delete;\n"
                   "    int count(int of = 2) const;\n    void a()\n    {\n        int local = 0;\n    }\n"
                   "    static constexpr int most = 3;\n    using Text = QString;\n    enum class Kind { one };\n"
                   "    friend class B;\n};\n")
        self.assertEqual(self.complaints(), [])


class Behaviour(Tree):
    def test_a_nested_event_loop_is_found(self):
        for line in ("QEventLoop loop;", "dialog.exec();", "menu->exec(place);", "QCoreApplication::processEvents();"):
            self.write("src/base/A.cpp", f"void a()\n{{\n    {line}\n}}\n")
            self.assert_complaint("src/base/A.cpp:3", "no nested event loops")

    def test_what_is_said_past_the_log_is_found(self):
        for line in ("std::cerr << 1;", "std::cout << 1;", "std::clog << 1;", "qDebug() << 1;", "qInfo() << 1;", 'qWarning("x");',
                     'qCritical("x");', 'qFatal("x");', 'std::fprintf(stderr, "x");', 'printf("x");', 'std::puts("x");',
                     'std::fputs("x", stderr);', 'perror("x");'):
            self.write("src/base/A.cpp", f"void a()\n{{\n    {line}\n}}\n")
            self.assert_complaint("src/base/A.cpp:3", "category in Log.h")

    def test_a_program_may_answer_and_say_why_it_does_not_start(self):
        self.write("src/reader/ReaderMain.cpp", 'int main()\n{\n    std::fputs("Usage", stderr);\n}\n')
        self.assertEqual(self.complaints(), [])

    def test_what_may_be_the_users_in_the_log_is_found(self):
        for told in ("error.what()", "path", "m_filePath", "request.url", "apiKey", "file.errorString()", "message.text()",
                     "content", "answer.body", "filename", "title", "environment", "command"):
            for speaks in ("qCDebug", "qCInfo", "qCWarning", "qCCritical"):
                self.write("src/base/A.cpp", f'void a()\n{{\n    {speaks}(baseLog) << "failed:"\n        << {told};\n}}\n')
                self.assert_complaint("src/base/A.cpp:3", "a log tells of the program only")
        self.write("src/base/A.cpp", 'qCInfo(baseLog) << "no path, key or text:" << kindOfFailure(error) << text.error();\n')
        self.assertEqual(self.complaints(), [])

    def test_an_error_that_is_passed_over_without_a_word_is_found(self):
        self.write("src/base/A.cpp", "void a()\n{\n    try {\n        b();\n    } catch (const Error &) {\n        // Never mind.\n    }\n}\n")
        self.assert_complaint("src/base/A.cpp:5", "is told to the folder's category")

    def test_a_failure_that_is_answered_with_nothing_has_its_reason_beside_it(self):
        for answer in ("return;", "return {};", "return false;", "co_return std::nullopt;", "return nullptr;", "return QString();"):
            text = f"void a()\n{{\n    try {{\n        b();\n    }} catch (const Error &) {{ REASON\n        {answer}\n    }}\n}}\n"
            self.write("src/base/A.cpp", text.replace("REASON", ""))
            self.assert_complaint("src/base/A.cpp:5", "what is passed over")
            self.write("src/base/A.cpp", text.replace("REASON", "// As b() without an error."))
            self.assertEqual(self.complaints(), [])
        self.write("src/base/A.cpp", 'void a()\n{\n    try {\n        b();\n    } catch (...) {\n        return "unknown";\n    }\n}\n')
        self.assertEqual(self.complaints(), [])

    def test_a_result_that_is_dropped_has_its_reason_beside_it(self):
        for line in ("static_cast<void>(sync(file));", "std::ignore = sync(file);", "(void)sync(file);"):
            self.write("src/base/A.cpp", f"// Far away.\n\n\nvoid a()\n{{\n    {line}\n}}\n")
            self.assert_complaint("src/base/A.cpp:6", "what is passed over")
            self.write("src/base/A.cpp", f"void a()\n{{\n    // The next one tells.\n    {line}\n    {line} // this too\n}}\nint b(void);\n")
            self.assertEqual(self.complaints(), [])

    def test_files_written_past_the_atomic_writer_are_found(self):
        for line in ("QSaveFile file(path);", "std::ofstream file(path);", "file.open(QIODevice::WriteOnly);",
                     "file.open(QFile::Append);", "file.open(QIODeviceBase::Truncate);", "file.open(QIODevice::NewOnly);"):
            self.write("src/store/A.cpp", f"void a()\n{{\n    {line}\n}}\n")
            self.assert_complaint("src/store/A.cpp:3", "base/AtomicFile.h only")

    def test_a_class_for_moc_in_a_folder_without_it_is_found(self):
        for word in ("Q_OBJECT", "Q_GADGET", "Q_NAMESPACE"):
            self.write("src/base/A.h", f"#pragma once\nclass A : public QObject {{\n    {word}\n}};\n")
            self.assert_complaint("src/base/A.h:3", "says no MOC")

    def test_a_folder_that_says_moc_for_nothing_is_found(self):
        self.write("src/CMakeLists.txt", "morvane_folder(base MOC LIBRARIES Qt6::Core)\n")
        self.write("src/base/A.h", "#pragma once\n")
        self.assert_complaint("src/CMakeLists.txt:1", "nothing to moc")


class Logs(Tree):
    LOG = """#pragma once
namespace morvane {
inline const QLoggingCategory &{function}()
{{
    static const FolderLog log("{category}");
    return log;
}}
}}
""".replace("morvane {", "morvane {{")

    def log(self, folder, function, category):
        return self.write(f"src/{folder}/Log.h", self.LOG.format(function=function, category=category))

    def test_a_category_of_another_name_than_its_folder_is_found(self):
        self.log("ui/theme", "themeLog", "morvane.ui.theme")
        self.assertEqual(self.complaints(), [])
        self.log("ui/theme", "themeLog", "morvane.theme")
        self.assert_complaint("src/ui/theme/Log.h:3", "this folder is morvane.ui.theme")

    def test_a_folder_that_speaks_in_the_name_of_another_is_found(self):
        self.log("base", "baseLog", "morvane.base")
        self.log("store", "storeLog", "morvane.store")
        for function in ("qCDebug", "qCInfo", "qCWarning", "qCCritical"):
            self.write("src/store/A.cpp", f'void a()\n{{\n    {function}(baseLog) << "failed";\n}}\n')
            self.assert_complaint("src/store/A.cpp:3", "baseLog is the log of base")
        for name in ("src/base/A.cpp", "src/main.cpp"):
            self.write("src/store/A.cpp", 'void a()\n{\n    qCWarning(storeLog) << "failed";\n}\n')
            self.write(name, 'void a()\n{\n    qCWarning(baseLog) << "failed";\n}\n')
            self.assertEqual(self.complaints(), [])


class Tests(Tree):
    WAITS = ("sleep", "usleep", "nanosleep", "QThread::msleep", "QTest::qWait", "QTest::qSleep", "std::this_thread::sleep_for",
             "std::this_thread::sleep_until")
    SLEEPING = tuple(f"{wait}({time});" for wait in WAITS for time in ("1", "1s"))

    def test_a_test_that_sleeps_is_found(self):
        for line in self.SLEEPING:
            self.write("tests/unit/base/ATest.cpp", f"TEST(A, b)\n{{\n    {line}\n}}\n")
            self.assert_complaint("tests/unit/base/ATest.cpp:3", "never sleep")

    def test_what_a_test_starts_and_its_fakes_do_not_sleep_either(self):
        for line in self.SLEEPING:
            self.write("tests/support/FakeA.cpp", f"void FakeA::ask()\n{{\n    {line}\n}}\n")
            self.assert_complaint("tests/support/FakeA.cpp:3", "never sleep")
        self.write("tests/support/FakeA.cpp", "\n")
        script = "time." + self.SLEEPING[0]  # of a program that the test holds as a text
        self.write("tests/integration/base/ATest.cpp", f'const char *program = "import time\\n"\n                      "{script}";\n')
        self.assert_complaint("tests/integration/base/ATest.cpp:2", "never sleep")

    def test_a_clock_that_a_test_brings_along_is_none_that_sleeps(self):
        self.write("tests/unit/base/ATest.cpp", "void sleep(int) override\n{\n    m_clock.sleep(1);\n}\n")
        self.assertEqual(self.complaints(), [])

    def test_a_program_of_tests_that_does_not_watch_the_log_is_found(self):
        text = "int main()\n{\n    WATCH\n    return RUN_ALL_TESTS();\n}\n"
        self.write("tests/support/AMain.cpp", text.replace("WATCH", "// watchTheLog();"))
        self.assert_complaint("tests/support/AMain.cpp:4", "the log is watched")
        self.write("tests/support/AMain.cpp", text.replace("WATCH", "watchTheLog();"))
        self.assertEqual(self.complaints(), [])

    def test_a_test_that_is_passed_over_is_found(self):
        self.write("tests/e2e/ATest.cpp", "TEST(A, DISABLED_b)\n{\n}\n")
        self.assert_complaint("tests/e2e/ATest.cpp:1", "passed over")
        self.write("tests/e2e/ATest.cpp", "TEST(A, b)\n{\n    GTEST_SKIP();\n}\n")
        self.assert_complaint("tests/e2e/ATest.cpp:3", "passed over")

    def test_a_test_where_none_is_compiled_is_found(self):
        path = self.write("tests/unit/ui/theme/ATest.cpp", "\n")
        self.assert_complaint("tests/unit/ui/theme/ATest.cpp:1", "not compiled")
        path.unlink()
        path = self.write("tests/integration/ATest.cpp", "\n")
        self.assert_complaint("tests/integration/ATest.cpp:1", "not compiled")
        path.unlink()
        self.write("tests/unit/theme/ATest.cpp", "\n")
        self.assertEqual(self.complaints(), [])

    def test_a_source_that_no_list_names_is_found(self):
        self.write("tests/CMakeLists.txt", "file(GLOB sources support/*.cpp)\nadd_subdirectory(e2e) # with Extra.cpp\n")
        self.write("tests/e2e/CMakeLists.txt", "file(GLOB sources *Test.cpp)\nadd_executable(program named/Main.cpp)\n")
        for name in ("tests/support/Fake.cpp", "tests/e2e/ATest.cpp", "tests/e2e/named/Main.cpp"):
            self.write(name, "\n")
        self.assertEqual(self.complaints(), [])
        self.write("bench/CMakeLists.txt", "file(GLOB programs *Bench.cpp)\n")
        for name in ("bench/A.cpp", "tests/Extra.cpp", "tests/support/more/Fake.cpp", "tests/e2e/ATets.cpp", "tests/e2e/deeper/ATest.cpp"):
            path = self.write(name, "\n")
            self.assert_complaint(f"{name}:1", "not compiled")
            path.unlink()

    def test_a_folder_of_tests_for_no_folder_is_found(self):
        self.write("tests/unit/extra/ATest.cpp", "\n")
        self.assert_complaint("tests/unit/extra/ATest.cpp:1", "no folder of src/")

    def test_processes_and_sockets_in_a_unit_test_are_found(self):
        names = ("AccessibleProgram", "ClipboardOwner", "TestProgram", "ScreenReader", "FakeNotificationDaemon", "MorvaneSession",
                 "PrivateDesktop", "RawHttpServer", "ScriptedModel", "TlsServer", "XConnection")
        for header in (*(f'"support/{name}.h"' for name in names), "<QProcess>", "<QTcpServer>", "<QUdpSocket>", "<QLocalServer>",
                       "<QLocalSocket>", "<QSslSocket>", "<QDBusInterface>"):
            self.write("tests/unit/base/ATest.cpp", f"#include {header}\n")
            self.assert_complaint("tests/unit/base/ATest.cpp:1", "memory and temporary files only")


class Compilers(Tree):
    """What clang's tools say, asked as the check asks them."""

    def setUp(self):
        super().setUp()
        for name in (".clang-format", ".clang-tidy"):
            shutil.copy(HOUSE / name, self.root / name)
        self.house, check.ROOT = check.ROOT, self.root
        self.addCleanup(setattr, check, "ROOT", self.house)

    def test_layout_and_braces_are_found_and_written(self):
        path = self.write("src/base/A.cpp", "int a(int b)\n{\n    if (b) {\n        return 1;\n    }\n    return   2;\n}\n")
        self.assertEqual(len(check.check_layout([path], False)), 1)
        self.assertEqual(check.check_layout([path], True), [])
        self.assertEqual(path.read_text(), "int a(int b)\n{\n    if (b)\n        return 1;\n    return 2;\n}\n")
        self.assertEqual(check.check_layout([path], False), [])

    def test_a_mistake_that_clang_tidy_knows_is_found(self):
        bad = self.write("src/base/A.cpp", "#include <string>\nstd::size_t a(std::string text)\n{\n"
                         "    std::string other = std::move(text);\n    return other.size() + text.size();\n}\n")
        good = self.write("src/base/B.cpp", "int b()\n{\n    return 1;\n}\n")
        commands = [{"directory": str(self.root), "file": str(path), "command": f"clang++-19 -std=c++23 -c {path}"}
                    for path in (bad, good)]
        self.write("build/debug/compile_commands.json", json.dumps(commands))
        found = check.check_tidy([bad, good])
        self.assertEqual(len(found), 1)
        self.assertIn("bugprone-use-after-move", found[0])

    def test_a_test_that_leaves_an_include_to_its_neighbours_is_found(self):
        bad = self.write("tests/unit/base/A.cpp", "std::string a()\n{\n    return {};\n}\n")
        good = self.write("tests/unit/base/B.cpp", "#include <string>\nstd::string b()\n{\n    return {};\n}\n")
        reader = self.write("tests/fuzz/C.cpp", "no C++\n")
        self.assertEqual(check.check_alone([bad]), [])  # where configuring failed, which is told by itself
        commands = [{"directory": str(self.root), "file": str(path), "command": f"clang++-19 -std=c++23 -c {path}"}
                    for path in (bad, good)]
        self.write("build/debug/compile_commands.json", json.dumps(commands))
        found = check.check_alone([bad, good, reader])
        self.assertEqual((len(found), "'std'" in found[0]), (1, True), found)


class Whole(Tree):
    """What scripts/check.py and scripts/rules.py say in the end."""

    def setUp(self):
        super().setUp()
        shutil.copy(HOUSE / ".clang-format", self.root / ".clang-format")
        self.read = []

        def read(sources):
            self.read += [path.relative_to(self.root).as_posix() for path in sources]
            return ["a mistake"] if any(path.stem.startswith("Bad") for path in sources) else []

        for name, value in (("ROOT", self.root), ("check_tidy", read), ("check_alone", read), ("configure", lambda: [])):
            patch = unittest.mock.patch.object(check, name, value)
            patch.start()
            self.addCleanup(patch.stop)
        self.good = self.write("src/base/Good.cpp", "int a();\n")

    def check(self, *words):
        self.read.clear()
        with unittest.mock.patch.object(sys, "argv", ["check.py", *words]), contextlib.redirect_stdout(io.StringIO()) as output:
            code = check.main()
        return code, output.getvalue()

    def test_nothing_to_complain_about_is_a_success(self):
        self.assertEqual(self.check("--quick"), (0, "Checked the rules and the layout of all files, 0 sources with "
                                                    "clang-tidy, 0 of tests each by itself: nothing to complain about.\n"))

    def test_a_broken_rule_is_told_and_fails(self):
        self.write("src/base/Good.cpp", "int count;\n")
        code, output = self.check("--quick")
        self.assertEqual((code, output.count("src/base/Good.cpp:1: count outlives every object"), "1 complaints" in output), (1, 1, True))
        rule = subprocess.run([HOUSE / "scripts" / "rules.py", self.root], capture_output=True, text=True)
        self.assertEqual((rule.returncode, rule.stdout.count("count outlives every object")), (1, 1))

    def test_layout_is_looked_at_wherever_there_are_sources(self):
        for top in ("src/base", "tests/support", "bench"):
            path = self.write(f"{top}/Text.h", "#pragma once\nint   a();\n")
            code, output = self.check("--quick")
            self.assertEqual((code, f"{top}/Text.h:2" in output), (1, True), output)
            self.assertEqual(self.check("--quick", "--fix")[0], 0)
            self.assertEqual(path.read_text(), "#pragma once\nint a();\n")
            path.unlink()

    def test_with_all_every_source_is_read_or_those_of_a_name(self):
        self.write("src/base/Good.h", "#pragma once\n")
        self.write("src/base/Good.cpp", '#include "base/Good.h"\n')
        self.write("src/store/Bad.cpp", "int b();\n")
        self.assertEqual((self.check("--all")[0], self.read), (1, ["src/base/Good.cpp", "src/store/Bad.cpp"]))
        self.assertEqual((self.check("--all", "ba")[0], self.read), (0, ["src/base/Good.cpp"]))
        self.write("tests/unit/base/BadTest.cpp", "int c();\n")
        self.assertEqual((self.check("--all", "base")[0], self.read), (1, ["src/base/Good.cpp", "tests/unit/base/BadTest.cpp"]))
        self.assertEqual(self.check("--all", "nowhere"), (1, 'No source has "nowhere" in its path.\n'))
        self.assertEqual((self.check("--quick")[0], self.read), (0, []))

    def test_a_build_that_cannot_be_configured_fails(self):
        with unittest.mock.patch.object(check, "configure", lambda: ["no cmake"]):
            self.assertEqual(self.check("--all")[0], 1)
            self.assertEqual(self.check("--quick")[0], 0)

    def test_what_changed_is_read_and_a_history_that_is_cut_off_is_told(self):
        with unittest.mock.patch.object(check, "changed_files", lambda: {self.good}):
            self.assertEqual((self.check()[0], self.read), (0, ["src/base/Good.cpp"]))
        test = self.write("tests/unit/base/GoodTest.cpp", "int c();\n")
        self.write("tests/unit/base/OtherTest.cpp", "int d();\n")
        with unittest.mock.patch.object(check, "changed_files", lambda: {test}):
            self.assertEqual((self.check()[0], self.read), (0, ["tests/unit/base/GoodTest.cpp"]))
        with unittest.mock.patch.object(check, "changed_files", lambda: None):
            self.assertIn("./test --lint reads all", self.check()[1])


class Base(Tree):
    """Which commit the changes are told from."""

    def setUp(self):
        super().setUp()
        self.house = check.ROOT
        self.addCleanup(setattr, check, "ROOT", self.house)
        self.origin = self.root / "origin"
        self.origin.mkdir()
        self.run_git("init", "-q", "-b", "main")
        self.first = self.commit("a.txt")
        self.second = self.commit("b.txt")

    def run_git(self, *arguments, folder=None):
        names = ["-c", "user.name=Test", "-c", "user.email=test@example.invalid"]
        result = subprocess.run(["git", *names, *arguments], cwd=folder or self.origin, capture_output=True, text=True,
                                check=True)
        return result.stdout.strip()

    def commit(self, name, folder=None):
        ((folder or self.origin) / name).write_text(name)
        self.run_git("add", "-A", folder=folder)
        self.run_git("commit", "-q", "-m", name, folder=folder)
        return self.run_git("rev-parse", "HEAD", folder=folder)

    def clone(self, *options):
        self.run_git("clone", "-q", *options, f"file://{self.origin}", str(self.root / "clone"))
        check.ROOT = self.root / "clone"
        return check.ROOT

    def test_in_a_fresh_clone_it_is_the_commit_before(self):
        self.clone()
        self.assertEqual(check.base_commit(), self.first)
        self.assertEqual(check.changed_files(), {check.ROOT / "b.txt"})

    def test_with_changes_on_main_it_is_main(self):
        clone = self.clone()
        (clone / "b.txt").write_text("changed")
        (clone / "new.txt").write_text("new")
        self.assertEqual(check.changed_files(), {clone / "b.txt", clone / "new.txt"})

    def test_without_a_main_elsewhere_changes_are_told_from_the_last_commit(self):
        check.ROOT = self.origin
        (self.origin / "a.txt").unlink()
        (self.origin / "new.txt").write_text("new")
        self.assertEqual(check.base_commit(), self.second)
        self.assertEqual(check.changed_files(), {self.origin / "new.txt"})

    def test_on_a_branch_it_is_where_the_branch_left_main(self):
        clone = self.clone()
        self.run_git("checkout", "-q", "-b", "work", folder=clone)
        self.commit("c.txt", clone)
        self.commit("d.txt", clone)
        self.assertEqual(check.base_commit(), self.second)

    def test_main_may_have_another_name_there(self):
        self.run_git("branch", "-m", "trunk")
        clone = self.clone()
        self.run_git("checkout", "-q", "-b", "work", folder=clone)
        self.commit("c.txt", clone)
        self.commit("d.txt", clone)
        self.assertEqual(check.base_commit(), self.second)

    def test_a_clone_of_one_branch_alone_has_one_too(self):
        self.run_git("checkout", "-q", "-b", "work")
        self.commit("c.txt")
        self.clone("--single-branch", "--branch", "work")
        self.assertEqual(check.base_commit(), self.second)

    def test_a_history_that_was_cut_off_is_told_apart_from_no_change(self):
        self.clone("--depth", "1")
        self.assertIsNone(check.base_commit())
        self.assertIsNone(check.changed_files())

    def test_a_changed_header_concerns_the_sources_of_its_class(self):
        header = self.write("src/base/Text.h", "#pragma once\nclass Text {};\n")
        whole = [self.write(f"src/base/{name}.cpp", '#include "base/Text.h"\n') for name in ("Reading", "Text")]
        other = self.write("src/base/Other.cpp", "\n")
        self.assertEqual(check.concerned(whole + [other], {header}), whole)
        self.assertEqual(check.concerned(whole + [other], {other}), [other])

    def test_a_changed_header_without_sources_concerns_one_that_includes_it(self):
        header = self.write("src/base/Shape.h", "#pragma once\nclass Shape {};\n")
        readers = [self.write(f"src/base/{name}.cpp", f'#include "base/{name}.h"\n#include "base/Shape.h"\n')
                   for name in ("Circle", "Square")]
        other = self.write("src/base/Other.cpp", "\n")
        self.assertEqual(check.concerned([other, *readers], {header}), readers[:1])
        self.assertEqual(check.concerned([other, *readers], {header, readers[1]}), readers[1:])

    def test_a_changed_header_of_the_tests_concerns_one_that_includes_it(self):
        for header, include in (("tests/support/Shape.h", "support/Shape.h"), ("tests/unit/base/Fixture.h", "Fixture.h")):
            reader = self.write("tests/unit/base/CircleTest.cpp", f'#include "{include}"\n')
            self.assertEqual(check.concerned([reader], {self.write(header, "#pragma once\n")}), [reader])

    def test_the_history_of_a_folder_around_is_none(self):
        inner = self.clone() / "inner"
        inner.mkdir()
        check.ROOT = inner
        self.assertIsNone(check.changed_files())


if __name__ == "__main__":
    unittest.main()
