#!/usr/bin/env python3
"""Each rule of tidy.py with a case that it must find and one that it must not."""

import contextlib
import io
import os
import tempfile
import unittest

import graph
import tidy
from shape import functions
from source import Source, code_of


def rules(path, text):
    return [finding.rule for finding in tidy.check(path, text)]


def lines(count, line="  step();\n"):
    return line * count


class CodeTest(unittest.TestCase):
    def test_comments_and_literals_are_blanked_in_place(self):
        text = "a = \"x{\"; // }\nb = '{'; /* { \n } */ c = R\"(\"{)\";"
        code = code_of(text)
        self.assertEqual(len(code), len(text))
        self.assertEqual(code.count("\n"), text.count("\n"))
        self.assertNotIn("{", code)
        self.assertNotIn("}", code)
        self.assertIn("c =", code)

    def test_a_digit_separator_opens_no_literal(self):
        self.assertIn("f()", code_of("int n = 100'000; f(); int m = 1'0;"))

    def test_a_quote_in_a_comment_opens_no_literal(self):
        self.assertIn("f()", code_of("// don't\nf(); // it's"))


class GraphTest(unittest.TestCase):
    def test_it_has_an_arrow_for_each_two_places_that_an_include_joins(self):
        sources = [Source("host/config/File.cpp", '#include "host/text/Diagnostic.h"\n#include <map>\n'),
                   Source("host/Host.h", '#include "engine/MkaSm.h"\n#include "engine/MkaRootSm.h"\n'),
                   Source("engine/MkaSm.cpp", '#include "engine/MkaSm.h"\n'),
                   Source("tests/host/HostTest.cpp", '#include "host/Host.h"\n')]
        self.assertEqual(graph.arrows(sources), {("host/config", "host/text"): 1, ("host", "engine"): 2})
        self.assertIn('"host" -> "engine" [label=2];', graph.drawn(graph.arrows(sources)))


class FloorsTest(unittest.TestCase):
    def floors(self, room, include):
        return rules(f"{room}/File.cpp", f"#include {include}\n")

    def test_a_room_above_is_found(self):
        self.assertEqual(self.floors("runtime", '"model/Macsec.h"'), ["floors"])
        self.assertEqual(self.floors("model", '"engine/MkaSm.h"'), ["floors"])
        self.assertEqual(self.floors("codec", '"engine/MkaSm.h"'), ["floors"])
        self.assertEqual(self.floors("engine", '"codec/Frame.h"'), ["floors"])
        self.assertEqual(self.floors("host", '"apps/main.h"'), ["floors"])

    def test_the_same_room_and_those_below_are_not(self):
        self.assertEqual(self.floors("runtime", '"runtime/String8.h"'), [])
        self.assertEqual(self.floors("engine", '"controlled_port/ControlledPortSm.h"'), [])
        self.assertEqual(self.floors("host", '"codec/Frame.h"'), [])
        self.assertEqual(self.floors("apps", '"lab/Lab.h"'), [])
        self.assertEqual(self.floors("tests/runtime", '"engine/MkaSm.h"'), [])

    def test_linux_and_lab_never_meet(self):
        self.assertEqual(self.floors("linux", '"lab/Lab.h"'), ["floors"])
        self.assertEqual(self.floors("lab", '"linux/Loop.h"'), ["floors"])
        self.assertEqual(self.floors("lab", '"host/Switch.h"'), [])

    def test_includes_between_the_shelves_of_a_room_run_one_way(self):
        self.assertEqual(self.floors("host/config", '"host/text/Diagnostic.h"'), [])
        self.assertEqual(self.floors("host/config", '"host/config/ConfigFile.h"'), [])
        self.assertEqual(self.floors("host/port", '"host/Host.h"'), [])
        self.assertEqual(self.floors("host/text", '"host/config/ConfigFile.h"'), ["floors"])
        self.assertEqual(self.floors("host", '"host/port/PortSummary.h"'), ["floors"])
        self.assertEqual(self.floors("linux/kernel", '"linux/Daemon.h"'), ["floors"])
        self.assertEqual(self.floors("lab/world", '"lab/judge/Finding.h"'), ["floors"])
        self.assertEqual(self.floors("tests/host/text", '"host/Host.h"'), [])

    def test_a_folder_that_is_no_shelf_is_found(self):
        self.assertEqual(self.floors("host/cellar", '"host/text/Diagnostic.h"'), ["floors"])
        self.assertEqual(self.floors("runtime/cellar", "<vector>"), ["floors"])

    def test_a_client_knows_no_engine(self):
        self.assertEqual(self.floors("host/client", '"host/text/TimeText.h"'), [])
        self.assertEqual(self.floors("host/client", '"host/config/ConfigFile.h"'), ["floors"])
        self.assertEqual(self.floors("host/client", '"model/Status.h"'), ["floors"])
        self.assertEqual(self.floors("linux/client", '"linux/process/WallClock.h"'), [])
        self.assertEqual(self.floors("linux/client", '"linux/net/LinkTable.h"'), ["floors"])

    def test_only_the_memory_of_objects_comes_from_the_system_itself(self):
        blocks = rules("runtime/HomeBlocks.cpp", "#include <sys/mman.h>\n#include <sys/socket.h>\n")
        self.assertEqual(blocks, ["floors"])
        self.assertEqual(self.floors("runtime", "<sys/mman.h>"), ["floors"])

    def test_a_header_is_included_by_its_room(self):
        self.assertEqual(self.floors("model", '"Macsec.h"'), ["floors"])

    def test_files_sockets_and_libraries_stay_above_the_engine(self):
        for include in ("<fstream>", "<filesystem>", "<sys/socket.h>", "<net/if.h>",
                        "<yaml-cpp/yaml.h>", '"yaml-cpp/yaml.h"', "<CLI/CLI.hpp>",
                        "<nlohmann/json.hpp>", "<unistd.h>"):
            self.assertEqual(self.floors("engine", include), ["floors"], include)
            self.assertEqual(self.floors("host", include), [], include)
        self.assertEqual(self.floors("engine", "<vector>"), [])
        self.assertEqual(self.floors("runtime", "<string.h>"), [])

    def test_openssl_stays_in_its_rooms(self):
        for room in ("runtime", "model", "engine", "host", "lab", "apps"):
            self.assertEqual(self.floors(room, "<openssl/evp.h>"), ["floors"], room)
        for room in ("platform", "codec", "config", "tests/platform", "bench"):
            self.assertEqual(self.floors(room, "<openssl/evp.h>"), [], room)

    def test_an_include_in_a_comment_is_none(self):
        text = '/*\n#include "engine/MkaSm.h"\n*/\n// #include "engine/MkaSm.h"\n'
        self.assertEqual(rules("model/File.h", text), [])

    def test_a_folder_of_code_that_is_no_room_is_found(self):
        self.assertEqual(rules("attic/File.cpp", "int x;\n"), ["floors"])
        self.assertEqual(rules("attic/notes.md", "old\n"), [])


class FileLengthTest(unittest.TestCase):
    def test_401_lines_are_found_and_400_are_not(self):
        for path in ("model/File.h", "model/File.cpp", "tests/model/tool.py", "bench/File.cpp"):
            self.assertEqual(rules(path, lines(401, "\n")), ["file-length"], path)
            self.assertEqual(rules(path, lines(400, "\n")), [], path)

    def test_a_last_line_without_its_end_counts(self):
        self.assertEqual(rules("model/File.h", lines(400, "\n") + "x"), ["file-length"])

    def test_documents_may_be_long(self):
        self.assertEqual(rules("docs/lab.md", lines(401, "\n")), [])


class FunctionLengthTest(unittest.TestCase):
    HEADS = (
        "void f() {",
        "template <class T>\nvoid f(T const& t = {}) const noexcept {",
        "Foo::Foo(int a) : a_(a), b_{a}, c_{} {",
        "Foo::~Foo() {",
        "auto f() -> std::vector<int> {",
        "bool operator==(Foo const& a, Foo const& b) {",
        "T& Foo::operator()(int a) {",
        "Foo& Foo::operator=(Foo o) {",
        "TEST(Thing, DoesThis) {",
        'extern "C" void f() {',
        "struct Result f() {",
        "auto f = [](int a) mutable {",
        "static auto f = make([&] {",
    )

    def function(self, head, body_lines):
        close = "});\n" if "make(" in head else "};\n" if "= [" in head else "}\n"
        return head + "\n" + lines(body_lines) + close

    def test_61_lines_are_found_and_60_are_not(self):
        for head in self.HEADS:
            fixed = head.count("\n") + 2
            self.assertEqual(rules("model/File.cpp", self.function(head, 61 - fixed)),
                             ["function-length"], head)
            self.assertEqual(rules("model/File.cpp", self.function(head, 60 - fixed)), [], head)

    def test_a_namespace_is_no_function(self):
        inside = lines(3, self.function("void f() {", 40))
        for head in ("namespace a::b {", "namespace {", "inline namespace c {", 'extern "C" {',
                     "MACRO(4)\nnamespace a {"):
            self.assertEqual(rules("model/File.cpp", head + inside + "}\n"), [], head)

    def test_members_are_measured_one_by_one(self):
        inside = lines(3, "  void f() {\n" + lines(30) + "  }\n")
        text = "namespace a::b {\nclass Foo : public Bar<int> {\n public:\n" + inside + "};\n}\n"
        self.assertEqual(rules("model/File.h", text), [])
        longer = text.replace("step();", "step();\n  step();", 30)
        self.assertEqual(rules("model/File.h", longer), ["function-length"])

    def test_a_lambda_counts_for_the_function_around_it(self):
        text = "void f() {\n  each([&](int a) {\n" + lines(60) + "  });\n}\n"
        self.assertEqual(rules("model/File.cpp", text), ["function-length"])

    def test_tables_and_enums_may_be_long(self):
        for head in ("Row const rows[] = {", "enum class Kind : uint8_t {", "struct S {",
                     "std::map<int, Foo> const m{", "class [[nodiscard]] alignas(8) S final {"):
            self.assertEqual(rules("model/File.cpp", head + lines(70, "\n") + "};\n"), [], head)
        self.assertEqual(rules("model/File.cpp", "run({\n" + lines(70, "{1, 2},\n") + "});"), [])

    def test_what_follows_a_table_is_measured_still(self):
        tables = "int const t[] = {1, 2};\nstruct S { int a{3}; };\nMACRO(4)\nnamespace a {}\n"
        text = tables + self.function("void f() {", 60)
        self.assertEqual(rules("model/File.cpp", text), ["function-length"])

    def test_braces_in_text_and_macros_do_not_count(self):
        text = '#define OPEN {\nvoid f() {\n  g("{", \'{\');  // {\n}\nvoid h() {\n}\n'
        found, balanced = functions(tidy.Source("model/File.cpp", text).statements)
        self.assertEqual((len(found), balanced), (2, True))

    def test_the_finding_names_the_function_and_its_line(self):
        text = "int a;\n\n" + self.function("void Foo::bar(int a) {", 70)
        finding = tidy.check("model/File.cpp", text)[0]
        self.assertEqual(finding.line, 3)
        self.assertEqual(finding.what, "Foo::bar has 72 lines")

    def test_braces_that_do_not_match_are_found(self):
        self.assertEqual(rules("model/File.cpp", "void f() {\n"), ["braces"])
        self.assertEqual(rules("model/File.cpp", "}\n"), ["braces"])


class BansTest(unittest.TestCase):
    def assert_banned(self, rule, code, free=()):
        for path in ("model/File.cpp", "host/File.h", "tests/model/FileTest.cpp"):
            self.assertEqual(rules(path, f"void f() {{\n  {code}\n}}\n"), [rule], (path, code))
        for room in free:
            self.assertEqual(rules(f"{room}/File.cpp", f"void f() {{\n  {code}\n}}\n"), [], room)

    def assert_fine(self, *codes):
        for code in codes:
            self.assertEqual(rules("model/File.cpp", f"{code}\n"), [], code)

    def test_the_clock(self):
        for code in ("auto t = std::chrono::steady_clock::now();", "time(nullptr);",
                     "x = std::time(0);", "return ::time(&t);", "clock_gettime(CLOCK, &t);",
                     "gettimeofday(&t, 0);"):
            self.assert_banned("clock", code, ("linux", "apps", "bench", "tests/linux"))
        self.assert_fine("double t = Vesk::now();", "double time() const { return time_; }",
                         "auto t = timer.time();", "x = runtime(0);", "// time(nullptr)")

    def test_randomness(self):
        for code in ("x = rand() % 3;", "x = arc4random_uniform(3);", "x = std::rand();",
                     "std::random_device d;",
                     "std::mt19937 r;", "RAND_bytes(p, 3);", "return rand();", "srand(1);"):
            self.assert_banned("randomness", code, ("linux", "apps", "lab", "tests/lab"))
        self.assert_fine("int x = Vesk::world().rand() % n;", "int y = world->rand();",
                         "virtual int rand() = 0;", "int World::rand() { return 0; }",
                         "int operand(3);")

    def test_sleep(self):
        for code in ("std::this_thread::sleep_for(x);", "usleep(3);", "nanosleep(&t, 0);",
                     "sleep(1);", "::sleep(1);"):
            self.assert_banned("sleep", code)
            self.assertIn("sleep", rules("linux/File.cpp", code))
        self.assert_fine("void sleep();", "timer.timeMinIs(Vesk::now() + 1);")

    def test_threads(self):
        for code in ("std::thread t(f);", "auto x = std::async(f);", "std::mutex m;",
                     "std::recursive_mutex m;", "pthread_create(&t, 0, f, 0);"):
            self.assert_banned("threads", code, ("bench",))
        self.assert_fine("thread_local int x = 0;", "std::atomic<int> n;")

    def test_raw_new_and_delete(self):
        for code in ("auto* p = new Foo(3);", "delete p;", "delete[] p;",
                     "::new (storage) Foo;", "::operator new(3);"):
            self.assert_banned("raw-new", code, ("runtime",))
        self.assert_fine("Foo(Foo const&) = delete;", "Foo(Foo const&) =\n    delete;",
                         "#include <new>", "int renewed = 1;  // a new one", 'f("new");')

    def test_a_finding_names_its_replacement(self):
        finding = tidy.check("model/File.cpp", "int x = rand();\n")[0]
        self.assertEqual(str(finding),
                         "model/File.cpp:1: randomness: 'rand(' outside apps/, linux/, lab/: take "
                         "Vesk::world().rand() for delays, Vesk::world().randomBytes() for keys")


class AllowTest(unittest.TestCase):
    CODE = "void* operator new(size_t n) { return count(n); }"

    def test_an_exception_with_its_reason_lifts_the_ban(self):
        comment = "// tidy: allow(raw-new) counts allocations"
        for text in (f"{self.CODE}  {comment}\n", f"{comment}\n{self.CODE}\n"):
            self.assertEqual(rules("tests/codec/AllocationTest.cpp", text), [])

    def test_it_lifts_no_other_ban_and_reaches_no_further(self):
        comment = "// tidy: allow(sleep) waits"
        self.assertEqual(rules("tests/a.cpp", f"{comment}\n{self.CODE}\n"), ["allow", "raw-new"])
        comment = "// tidy: allow(raw-new) counts allocations"
        self.assertEqual(rules("tests/a.cpp", f"{comment}\n\n{self.CODE}\n"), ["allow", "raw-new"])

    def test_an_exception_without_rule_reason_or_use_is_found(self):
        for comment in ("// tidy: allow(naps) tired", "// tidy: allow(raw-new) nothing here"):
            self.assertEqual(rules("tests/a.cpp", comment + "\n"), ["allow"])
        text = f"{self.CODE}  // tidy: allow(raw-new)\n"
        self.assertEqual(rules("tests/a.cpp", text), ["allow"])


class WordsTest(unittest.TestCase):
    def test_what_the_tree_does_not_say_is_found_anywhere(self):
        for words in ("Pa" + "rt 3.4", "the spec" + "ification", "The\n// spec" + "ification",
                      "spec" + ".md"):
            for path in ("README.md", "model/File.h", "tests/tool.py", "run"):
                self.assertEqual(rules(path, f"// {words}\n"), ["words"], (path, words))

    def test_other_words_are_not(self):
        text = "// Part of IEEE 802.1X-2010 9.4; Parts; a spec" + "ification of one's own\n"
        self.assertEqual(rules("docs/lab.md", text), [])


class DescribedTest(unittest.TestCase):
    CLASS = """class Sci : public Vesk::Value<Sci> {
 public:
  Sci() = default;
  Sci(Addr addr, int port) : addr_(addr), port_(port) {}
  int port() const { int local_; return port_; }
  static constexpr int static_ = 1;
  template <class V>
  static void describe(V&& v) { DESCRIBED }
  NESTED
 private:
  Vesk::Ptr<Addr> addr_;
  HashMap<A, B> more_{};
  int port_ = 0;
};
"""

    def described(self, *fields, nested="", path="model/Sci.h"):
        calls = " ".join(f'v("x", &Sci::{field});' for field in fields)
        text = self.CLASS.replace("DESCRIBED", calls).replace("NESTED", nested)
        return [(finding.rule, finding.line, finding.what) for finding in tidy.check(path, text)]

    def test_a_field_that_is_not_described_is_found_in_its_line(self):
        self.assertEqual(self.described("addr_", "more_"),
                         [("described", 13, "'port_' of Sci is not in its describe()")])
        self.assertEqual(len(self.described("port_")), 2)
        self.assertEqual(len(self.described("port_", "addr_")), 1)

    def test_all_fields_described_is_clean(self):
        self.assertEqual(self.described("addr_", "more_", "port_"), [])

    def test_a_nested_class_has_a_description_of_its_own(self):
        plain = "class Iterator { int at_; };"
        self.assertEqual(self.described("addr_", "more_", "port_", nested=plain), [])
        own = "class Inner { static void describe(V&& v) { v(&Inner::a_); } int a_; int b_; };"
        self.assertEqual(self.described("addr_", "more_", "port_", nested=own),
                         [("described", 9, "'b_' of Inner is not in its describe()")])

    def test_a_class_without_describe_is_none_of_its_business(self):
        self.assertEqual(rules("model/File.h", "class A {\n  int a_;\n};\n"), [])
        self.assertEqual(self.described(path="tests/model/Sci.h"), [])


class TreeTest(unittest.TestCase):
    def run_on(self, files):
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                    file.write(text)
            output = io.StringIO()
            with contextlib.redirect_stdout(output):
                status = tidy.main([root])
        return status, output.getvalue()

    def test_a_clean_tree_passes(self):
        self.assertEqual(self.run_on({"model/File.cpp": "int x;\n"}), (0, "1 files, 0 findings\n"))

    def test_a_broken_rule_fails_with_its_place(self):
        status, output = self.run_on({"model/File.cpp": "int x;\nint* y = new int;\n"})
        self.assertEqual(status, 1)
        self.assertTrue(output.startswith("model/File.cpp:2: raw-new: "), output)

    def test_an_empty_tree_proves_nothing_and_fails(self):
        self.assertEqual(self.run_on({})[0], 1)

    def test_what_a_build_made_and_what_is_hidden_is_left_alone(self):
        bad = "int* y = new int;\n"
        status, _ = self.run_on({"model/a.cpp": "int x;\n", "build/a.cpp": bad, ".git/a.cpp": bad,
                                 "here/CMakeCache.txt": "", "here/a.cpp": bad,
                                 "build-x/a.cpp": bad})
        self.assertEqual(status, 0)
        self.assertEqual(self.run_on({".ci/run": "spec" + ".md\n"})[0], 1)


if __name__ == "__main__":
    unittest.main()
