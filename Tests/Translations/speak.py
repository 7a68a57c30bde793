#!/usr/bin/env python3
"""Runs the command line in each of its languages: speak.py PROGRAM PROJECT

What people read must be as the catalogue has it, and what programs read the same as in English.
"""
import math
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import wave
from pathlib import Path

import catalogue

LOCALES = {"de": "de_AT", "es": "es_MX", "fr": "fr_FR", "ja": "ja_JP"}
PROGRAM = Path(sys.argv[1])
PROJECT = Path(sys.argv[2])
# The environment without what names a language or a place of the user's.
NEUTRAL = {name: value for name, value in os.environ.items() if not re.match("LANG|LC_|LOCPATH|XDG_", name)}
NEUTRAL["VK_ICD_FILENAMES"] = "none"


def write_sound(file: Path, rate: int) -> None:
    with wave.open(str(file), "wb") as sound:
        sound.setnchannels(1)
        sound.setsampwidth(2)
        sound.setframerate(rate)
        samples = [int(9000 * math.sin(0.1 * i + i * i / rate)) for i in range(rate // 4)]
        sound.writeframes(struct.pack(f"<{len(samples)}h", *samples))


class Words:
    """A language as its catalogue has it; English without one."""

    def __init__(self, language: str | None) -> None:
        entries = catalogue.read(PROJECT / f"Translations/{language}.po")[1:] if language else []
        self.known = {entry.singular: entry.translations for entry in entries}
        self.plurals = {entry.singular: entry.plural for entry in entries}

    def of(self, source: str, *arguments: str) -> str:
        return self.filled(self.known.get(source, [source])[0], arguments)

    def counted(self, count: int, one: str, several: str, *arguments: str) -> str:
        forms = self.known.get(one, [one, several])
        return self.filled(forms[0 if count == 1 or len(forms) == 1 else 1], (str(count), *arguments))

    @staticmethod
    def filled(pattern: str, arguments) -> str:
        return re.sub(r"\{(\d)\}", lambda match: arguments[int(match.group(1))], pattern)


class Speaking(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.place = Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.place)
        cls.sounds = cls.place / "sounds"
        cls.sounds.mkdir()
        for name, rate in (("a.wav", 22050), ("b.wav", 44100), ("c.wav", 44100)):
            write_sound(cls.sounds / name, rate)

    def run_program(self, *arguments, program: Path = PROGRAM, **environment) -> subprocess.CompletedProcess:
        return subprocess.run([program, *map(str, arguments)], encoding="utf-8", capture_output=True, check=False,
                              timeout=120, env={**NEUTRAL, "HOME": str(self.place), **environment})

    def in_each_language(self, check) -> None:
        """check(words, environment) for locales that the system need not have."""
        for language, name in LOCALES.items():
            with self.subTest(language=language):
                check(Words(language), {"LANG": f"{name}.UTF-8"})

    def check_scan(self, words: Words, environment) -> None:
        result = self.run_program("scan", self.sounds, **environment)
        self.assertEqual(result.returncode, 0, result.stderr)
        for text in (words.counted(3, "Decoding {0} sample…", "Decoding {0} samples…"),
                     words.of("Scanning {0}…", "sounds")):
            self.assertIn(text, result.stderr)
        rates = words.of("{0} and {1}", words.counted(1, "{1} Hz ({0} file)", "{1} Hz ({0} files)", "22050"),
                         words.counted(2, "{1} Hz ({0} file)", "{1} Hz ({0} files)", "44100"))
        for text in (words.of("{0} Hz; found: {1}", "44100", rates),
                     words.of("{0}, {1} in all", "3", words.of("{0} s", "0.75"))):
            self.assertIn(text, result.stdout)

    def test_a_report_has_its_words_and_its_plurals(self) -> None:
        self.in_each_language(self.check_scan)

    def test_english_is_what_the_sources_say(self) -> None:
        for environment in ({}, {"LANG": "C"}, {"LANG": "en_GB.UTF-8"}, {"LANG": "xx_XX"},
                            {"LC_ALL": "C", "LANGUAGE": "de"}, {"LANG": "en_US.UTF-8", "LANGUAGE": "en_US:en:de"},
                            {"LANG": "C.UTF-8"}, {"LC_ALL": "ja_JP.eucJP"}, {"LANG": "de_DE.UTF-8", "LC_CTYPE": "C"}):
            with self.subTest(environment=environment):
                self.check_scan(Words(None), environment)

    def test_failures_are_told_with_their_reasons(self) -> None:
        def check(words, environment) -> None:
            missing = self.run_program("scan", "/no/such", **environment)
            self.assertEqual(missing.returncode, 1)
            self.assertIn("quillmere-cli: " + words.of("{0} is not a folder", "/no/such"), missing.stderr)
            unread = self.run_program("relatives", "/no/such.wav", "--in", self.sounds, **environment)
            reason = words.of("Could not read {0}: {1}", "such.wav", words.of("No such file or directory"))
            self.assertIn(reason, unread.stderr)

        self.in_each_language(check)

    def test_usage_errors_are_told(self) -> None:
        """Those of CLI11 are known by their words, which another version of it could change: first in English."""
        def check(words, environment) -> None:
            generate = ["generate", "x", "--output", "y"]
            for arguments, text in (
                    (["train", "x", "--steps", "0"], "--steps: " + words.of(
                        "must be a whole number from {0} to {1}, not {2}", "1", "10000000", '"0"')),
                    ([], words.of("A command is required")),
                    (["scan"], words.of("{0} is required", "FOLDER")),
                    (["scan", "x", "y"], words.of("The following argument was not expected: {0}", "y")),
                    (["scan", "x", "y", "z"], words.of("The following arguments were not expected: {0}", "z y")),
                    ([*generate, "--first", "2"], words.of("{0} requires {1}", "--first", "--seed")),
                    (["train", "x", "--continue", "1", "--steps", "2"],
                     words.of("{0} excludes {1}", "--steps", "--continue")),
                    (["train", "x", "--steps"], words.of("{0}: 1 required {1} missing", "--steps", "N")),
                    ([*generate, "--output", "z"],
                     words.of("{0}: At Most {1} required but received {2}", "--output", "1", "2"))):
                result = self.run_program(*arguments, **environment)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(result.stderr, f"quillmere-cli: {text}\n{words.of('Try --help.')}\n")

        check(Words(None), {})
        self.in_each_language(check)

    def test_counts_within_a_sentence_have_their_plurals(self) -> None:
        folder = self.place / "damaged"
        folder.mkdir()
        write_sound(folder / "a.wav", 44100)

        for count in (1, 2):
            (folder / f"broken-{count}.wav").write_bytes(b"RIFF")

            def check(words, environment, count=count) -> None:
                unreadable = words.counted(count, "{0} unreadable", "{0} unreadable")
                self.assertIn(words.of("{0}, {1} in all, {2}", str(1 + count), words.of("{0} s", "0.25"), unreadable),
                              self.run_program("scan", folder, **environment).stdout)

            check(Words(None), {})
            self.in_each_language(check)

    def test_a_value_is_told_as_it_is_typed(self) -> None:
        def check(words, environment) -> None:
            analysis = words.of("{0} analysis, {1} per sample", "percussive", words.of("{0} s", "0.37"))
            self.assertIn(analysis, self.run_program("scan", self.sounds, **environment).stdout)

        self.in_each_language(check)

    def test_help_is_in_the_language(self) -> None:
        def check(words, environment) -> None:
            text = self.run_program("train", "--help", **environment).stdout
            threads = words.of("{0} (default: {1})", words.of("Threads to use"), words.of("one per processor"))
            for part in (words.of("Learn a folder of samples and store the model"), words.of("Usage") + ": ",
                         words.of("Positionals") + ":", words.of("Options") + ":", threads):
                self.assertIn(part, text)
            self.assertIn(words.of("Subcommands") + ":", self.run_program("--help", **environment).stdout)

        self.in_each_language(check)

    def test_tables_are_in_the_language(self) -> None:
        def check(words, environment) -> None:
            for command, text in (("parameters", "Tanh saturation."), ("parameters", "Signal & degradation"),
                                  ("presets", "Far from home, but still musical."), ("devices", "cpu")):
                self.assertIn(words.of(text), self.run_program(command, **environment).stdout)

        self.in_each_language(check)

    def test_events_are_the_same_in_every_language(self) -> None:
        commands = (["scan", self.sounds, "--json"], ["scan", "/no/such", "--json"], ["parameters", "--json"],
                    ["presets", "--json"], ["relatives", "/no/such.wav", "--in", self.sounds, "--json"])
        english = [self.run_program(*command).stdout for command in commands]
        self.assertIn('"message":"/no/such is not a folder"', english[1])

        def check(_, environment) -> None:
            for command, expected in zip(commands, english):
                self.assertEqual(self.run_program(*command, **environment).stdout, expected)

        self.in_each_language(check)

    def storing(self, place: Path):
        """A command of each kind that stores files, each given once the one before has ended."""
        model = ["--models", place / "models"]
        yield ["train", self.sounds, *model, "--steps", "2", "--seed", "1"]
        yield ["generate", self.sounds, *model, "--output", place / "new", "--count", "2", "--seed", "1",
               "--recipes", place / "recipes.jsonl", "--embed-recipe"]
        yield ["kit", *sorted((place / "new").glob("*.wav")), *model, "--output", place / "kit", "--count", "2",
               "--seed", "1"]
        yield ["map", self.sounds, *model, "--picture", place / "map.svg"]
        yield ["report", self.sounds, *model, "--html", place / "report.html"]

    def store_everything(self, name: str, **environment) -> dict[str, bytes]:
        """All files that are stored, without what tells the day, the time and the place."""
        place = self.place / name
        place.mkdir()
        for command in self.storing(place):
            result = self.run_program(*command, XDG_DATA_HOME=str(place / "data"), **environment)
            self.assertEqual(result.returncode, 0, (command, result.stderr))
        when = re.compile(rb"\d{4}-\d\d-\d\d([T ]\d\d[:-]\d\d[:-]\d\d(\.\d+)?Z?)?|\"at\":\s*[\d.]+"
                          rb"|\"(trainedAt|seconds\w*)\":\s*[\d.e+]+")
        files = {}
        for file in sorted(place.rglob("*")):
            if file.is_file() and file.name != "SHA256SUMS":  # sums of files that tell the time
                shown = when.sub(b"WHEN", str(file.relative_to(place)).encode()).decode()
                files[shown] = when.sub(b"WHEN", file.read_bytes().replace(str(place).encode(), b"PLACE"))
                if file.suffix == ".jsonl":  # a line per sound, whichever was finished first
                    files[shown] = b"".join(sorted(files[shown].splitlines(keepends=True)))
        return files

    def test_stored_files_are_the_same_in_every_language(self) -> None:
        english = self.store_everything("in-c", LC_ALL="C")
        self.assertGreater(len(english), 8, list(english))
        japanese = self.store_everything("in-ja", LANG="ja_JP.UTF-8")
        self.assertEqual(list(english), list(japanese))
        for name, content in english.items():
            with self.subTest(file=name):
                self.assertEqual(content, japanese[name])

    def test_without_a_catalogue_it_speaks_english(self) -> None:
        alone = self.place / "bin" / "quillmere-cli"
        alone.parent.mkdir()
        shutil.copy2(PROGRAM, alone)
        for command in (["scan", self.sounds], ["--help"], ["scan"]):
            here = self.run_program(*command)
            there = self.run_program(*command, program=alone, LANG="de_DE.UTF-8")
            self.assertEqual((there.stdout, there.stderr), (here.stdout, here.stderr))

    def test_language_is_chosen_as_elsewhere(self) -> None:
        self.check_scan(Words("fr"), {"LC_ALL": "C.UTF-8", "LANGUAGE": "fr:de"})
        self.check_scan(Words("de"), {"LANG": "ja_JP.UTF-8", "LC_MESSAGES": "de_DE.UTF-8"})
        self.check_scan(Words("es"), {"LANG": "de_DE.UTF-8", "LC_ALL": "es_ES.UTF-8"})
        self.check_scan(Words("de"), {"LANG": "de_DE.UTF-8", "LANGUAGE": ""})

    def test_english_can_be_preferred_to_a_language_that_is_there(self) -> None:
        here = self.run_program("scan", self.sounds)
        there = self.run_program("scan", self.sounds, LC_ALL="C.UTF-8", LANGUAGE="en_GB:en:de")
        self.assertEqual((there.stdout, there.stderr), (here.stdout, here.stderr))

    def test_an_installed_locale_does_the_same(self) -> None:
        """Of which only the words are taken: its numbers have commas."""
        folder = self.place / "locales"
        folder.mkdir()
        subprocess.run(["localedef", "--inputfile=de_DE", "--charmap=UTF-8", folder / "de_DE.UTF-8"], check=True)
        environment = {"LC_ALL": "de_DE.UTF-8", "LOCPATH": str(folder)}
        comma = subprocess.run([sys.executable, "-c", "import locale; locale.setlocale(locale.LC_ALL, '');"
                                "print(locale.localeconv()['decimal_point'])"], check=True, encoding="utf-8",
                               capture_output=True, env={**NEUTRAL, **environment}).stdout
        self.assertEqual(comma.strip(), ",", "the locale is there")
        self.check_scan(Words("de"), environment)
        self.assertEqual(self.run_program("parameters", "--json", **environment).stdout,
                         self.run_program("parameters", "--json").stdout)

    def test_characters_of_an_installed_locale_are_its_own(self) -> None:
        """A name without a character set is one of before UTF-8, where the system has it."""
        folder = self.place / "old-locales"
        folder.mkdir()
        subprocess.run(["localedef", "--inputfile=de_DE", "--charmap=ISO-8859-1", folder / "de_DE"], check=True)
        self.check_scan(Words(None), {"LC_ALL": "de_DE", "LOCPATH": str(folder)})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
