"""Keeps packaging/corvane.conf, the manual page and README's table in step with the code: every key
that the code reads is shown, with its default, and no other.

Usage: config_sample_test.py SOURCE_DIRECTORY
"""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])

CALL = re.compile(
    r"\b(?:getInt|getBool|getString|getPropertyAsString|getProperty|limitOf|numberOf)\s*\("
    r"\s*(?:store\s*,\s*)?\"(?P<key>[^\"]+)\"\s*(?:,\s*(?P<default>\"[^\"]*\"|\w+))?\s*[,)]")
CONSTANT = re.compile(r"constexpr (?:int|const char\*) (\w+) = \"?([^\";]*)\"?;")
# Its keys are put together at run time, from an extension.
EXTENSION_KEYS = {"app.EXT": "", "app.EXT.mac": ""}


def sources():
    paths = [*(ROOT / "src").rglob("*.h"), *(ROOT / "src").rglob("*.cpp")]
    return [path.read_text() for path in sorted(paths)]


def keys_of_code():
    """The keys and the texts of their defaults."""
    keys = {}
    constants = dict(CONSTANT.findall("\n".join(sources())))
    for text in sources():
        for call in CALL.finditer(text):
            default = call["default"] or "0"
            keys[call["key"]] = constants.get(default, default.strip('"'))
    return keys | EXTENSION_KEYS


def sample_lines():
    return (ROOT / "packaging" / "corvane.conf").read_text().splitlines()


def keys_of_sample():
    settings = [line[1:] for line in sample_lines() if re.match(r"#[\w.]+=", line)]
    return dict(setting.split("=", 1) for setting in settings)


class ConfigSampleTest(unittest.TestCase):
    def test_sees_every_look_up_of_the_code(self):
        computed = re.compile(r"\.(?:getInt|getBool|getString|getPropertyAsString|getProperty)\((?!\")")
        places = {path.name: len(computed.findall(path.read_text()))
                  for path in (ROOT / "src").rglob("*.cpp") if path.name != "properties.cpp"}
        # limitOf() and numberOf() of the settings, an extension's program, a registry key
        self.assertEqual({name: count for name, count in places.items() if count},
                         {"settings.cpp": 3, "launcher.cpp": 2, "registry.cpp": 1})

    def test_finds_every_look_up_in_the_settings(self):
        readers = [path.name for path in (ROOT / "src").rglob("*.cpp")
                   if CALL.search(path.read_text())]
        self.assertEqual(readers, ["settings.cpp"])

    def test_shows_every_key_with_its_default(self):
        self.assertEqual(keys_of_sample(), keys_of_code())

    def test_switches_on_what_production_needs_with_a_reason_each(self):
        lines = sample_lines()
        switched_on = [line for line in lines if line and not line.startswith("#")]
        self.assertEqual(sorted(switched_on), ["REQUESTTIMEOUT=30", "SAMEUSER=true",
                                               "TOOLTIMEOUT=10", "log4cpp.priority=NOTICE"])
        for line in switched_on:
            self.assertRegex(lines[lines.index(line) - 1], "^# ", line)

    def test_has_every_key_once(self):
        shown = [line for line in sample_lines() if re.match(r"#[\w.]+=", line)]
        self.assertEqual(len(shown), len(keys_of_sample()))

    def test_can_be_read_by_the_server_when_switched_on(self):
        for line in sample_lines():
            self.assertLess(len(line.encode()), 1000)
            self.assertNotRegex(line, r"^#[\w.]+ +=|^#\w+= ")

    def test_manual_page_explains_the_same_keys(self):
        page = (ROOT / "docs" / "man" / "corvane.conf.5").read_text()
        self.assertEqual(set(re.findall(r"^\.It Cm (\S+) Ns = ", page, re.M)), set(keys_of_code()))

    def test_readme_lists_the_same_keys_with_their_defaults(self):
        readme = (ROOT / "README.md").read_text()
        table = readme.split("## Configuration")[1].split("\n## ")[0]
        rows = re.findall(r"^\| (`[^|]*`) \| ([^|]*?) ?\| [^|]+ \|$", table, re.M)
        shown = {key: default.strip("`") for keys, default in rows
                 for key in re.findall(r"`([^`]+)`", keys)}
        self.assertEqual(shown, keys_of_code())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
