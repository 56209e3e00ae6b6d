"""What the tests of the program kestrel share: running it, and trying a command with every input that is wrong."""

import json
import os
import signal
import subprocess
import unittest

KESTREL = os.environ["KESTREL"]


def plain_environment(changes):
    """The variables that the program is run with, and what `changes` makes of them."""
    environment = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "TZ": "UTC", "LC_ALL": "C"}
    if "ASAN_OPTIONS" in os.environ:
        environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"]
    environment.update(changes)
    return environment


def run(*arguments, **changes):
    """Runs the program in a plain environment; `changes` are variables, the `input`, and where `stdin`, `stdout` go."""
    streams = {name: changes.pop(name) for name in ("input", "stdin", "stdout") if name in changes}
    if not streams.keys() & {"input", "stdin"}:
        streams["stdin"] = subprocess.DEVNULL
    streams.setdefault("stdout", subprocess.PIPE)
    return subprocess.run([KESTREL, *arguments], env=plain_environment(changes), stderr=subprocess.PIPE, encoding="utf-8",
                          errors="surrogateescape", timeout=300, check=False, **streams)


def gone_on(process):
    """Has the stopped program go on to its end, and gives what run() gives."""
    process.send_signal(signal.SIGCONT)
    stdout, stderr = process.communicate(timeout=300)
    return subprocess.CompletedProcess(process.args, process.returncode, stdout, stderr)


class Raw(float):
    """A number that is written as its text has it."""

    def __new__(cls, text):
        number = super().__new__(cls, 0)
        number.text = text
        return number

    def __repr__(self):
        return self.text


def written(document):
    """The document as JSON, with numbers that Raw holds as they are."""
    if isinstance(document, Raw):
        return document.text
    if isinstance(document, dict):
        return "{" + ",".join(json.dumps(key) + ":" + written(value) for key, value in document.items()) + "}"
    if isinstance(document, list):
        return "[" + ",".join(map(written, document)) + "]"
    return json.dumps(document)


KINDS = {"text": "text", "number": 1.5, "boolean": True, "list": [], "object": {}, "null": None}
FOUND = {"text": "text", "number": "a number", "boolean": "a boolean", "list": "a list", "object": "an object",
         "null": "null"}
HUGE = "1" + "0" * 400


def meant(text, allowed):
    """What an error line ends with where one letter of the text is off."""
    def shorter(word):
        return {word[:place] + word[place + 1:] for place in range(len(word))}

    for right in allowed:
        changed = len(text) == len(right) and sum(one != other for one, other in zip(text, right)) == 1
        if changed or text in shorter(right) or right in shorter(text):
            return f"; did you mean {right}?"
    return ""


class Field:
    """A field of a record: its path in an error line, the keys that lead to it, and what it takes."""

    def __init__(self, path, form, optional=False):
        self.path, self.form, self.optional = path, form, optional
        self.keys = []
        for part in path.replace('["', "\0").replace('"]', "\0.").replace("[", ".[").split("."):
            if not part:
                continue
            name, _, rest = part.partition("\0")
            if name.startswith("["):
                self.keys.append(int(name[1:-1]))
            elif name:
                self.keys.append(name)
            if rest.strip("\0"):
                self.keys.append(rest.strip("\0"))

    def wrong(self):
        """Pairs of a value that does not fit, and what is said of it."""
        takes, expected = {
            "text": ({"text"}, "text"), "number": ({"number"}, "a number"), "integer": ({"number"}, "an integer"),
            "list": ({"list"}, "a list"), "object": ({"object"}, "an object"), "boolean": ({"boolean"}, "a boolean"),
            "instant": ({"text"}, "text"), "uuid": ({"text"}, "text"),
        }.get(self.form if isinstance(self.form, str) else "text")
        for kind, value in KINDS.items():
            if kind not in takes and not (self.optional and kind == "null"):
                yield value, f"expected {expected}, found {FOUND[kind]}"
        if isinstance(self.form, list):
            for text in ("", "Nonsense", self.form[0].lower() if self.form[0] != self.form[0].lower() else
                         self.form[0].upper(), self.form[0] + " "):
                yield text, f"\"{text}\" is not one of {', '.join(self.form)}{meant(text, self.form)}"
            yield "a\nb\"", f"\"a\\u000Ab\\\"\" is not one of {', '.join(self.form)}"
        elif self.form == "number":
            for literal in ("1e400", "-1e400"):
                yield Raw(literal), f"{literal} is too large for a 64-bit float"
        elif self.form == "integer":
            for literal in ("1.5", "5e-1", "9223372036854775808", "-9223372036854775809", "1e19", "-1e400"):
                yield Raw(literal), f"{literal} is not an integer of 64 bits"
        elif self.form == "instant":
            for text in ("", "yesterday", "2024-05-01", "2024-05-01T08:30:00", "2024-02-30T08:30:00Z",
                         "2024-05-01T24:00:00Z", "2024-05-01T08:30:00.5Z", "2024-05-01 08:30:00Z",
                         "2024-05-01T08:30:00+02", "0000-05-01T08:30:00Z", "2024-05-01T08:60:00Z"):
                yield text, f"\"{text}\" is not an instant such as 2024-05-01T08:30:00Z"
        elif self.form == "uuid":
            for text in ("", "6F9619FF8B86D011B42D00C04FC964FF", "{6F9619FF-8B86-D011-B42D-00C04FC964FF}",
                         "6F9619FF-8B86-D011-B42D-00C04FC964F", "6F9619FG-8B86-D011-B42D-00C04FC964FF"):
                yield text, f"\"{text}\" is not a UUID"

    def fitting(self):
        """Values at the edge of what fits."""
        if self.form == "number":
            return [Raw(literal) for literal in ("0", "-0", "-1e308", "1e308", "1e-400", HUGE[:300])]
        if self.form == "integer":
            return [Raw(literal) for literal in ("0", "5.0", "5e0")]
        return []


def changed(document, keys, change):
    """A copy of the document in which `change` was called with the value that holds the last of `keys`, and that key."""
    copy = json.loads(written(document))
    inner = copy
    for key in keys[:-1]:
        inner = inner[key]
    change(inner, keys[-1])
    return copy


def with_value(document, keys, value):
    return changed(document, keys, lambda inner, key: inner.__setitem__(key, value))


def without(document, keys):
    return changed(document, keys, lambda inner, key: inner.__delitem__(key))


class KestrelTestCase(unittest.TestCase):
    maxDiff = None

    def output(self, *arguments, **changes):
        done = run(*arguments, **changes)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def result(self, *arguments, document, **changes):
        """What the program prints for the document, as text."""
        return self.output(*arguments, input=written(document), **changes)

    def stopped(self, *arguments, **changes):
        """Starts the program, which stops by itself as the variables in `changes` have it, and waits until it has."""
        process = subprocess.Popen([KESTREL, *arguments], env=plain_environment(changes), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
        self.addCleanup(process.kill)
        self.assertTrue(os.WIFSTOPPED(os.waitpid(process.pid, os.WUNTRACED)[1]), "it did not stop")
        return process

    def on_a_small_disk(self, folder, script, *arguments):
        """Runs the shell script where a disk of 64 KiB lies on the folder, its first argument, for it alone."""
        mounting = 'mount -t tmpfs -o size=64k kestrel-test "$1" || exit 77\n'
        namespace = ["--mount"] if os.geteuid() == 0 else ["--mount", "--map-root-user"]
        done = subprocess.run(["unshare", *namespace, "sh", "-c", mounting + script, "sh", folder, *arguments],
                              capture_output=True, encoding="utf-8", check=False)
        if done.returncode == 77 or done.stderr.startswith("unshare:"):
            self.skipTest("no file system can be mounted here")
        return done

    def assert_refused(self, done, status, message):
        self.assertEqual((done.returncode, done.stdout, done.stderr), (status, "", f"kestrel: {message}\n"))

    def assert_bad_input_is_refused(self, call, document, fields):
        """Tries the command `call` with all that its input must not be, beginning at the valid `document`. The first
        of `fields` is the root, with an empty path."""
        self.assertEqual(run(*call, input=written(document)).returncode, 0)
        self.assert_what_is_no_json_is_refused(call)
        root, *fields = fields
        for value, message in root.wrong():
            with self.subTest(value=value):
                self.assert_refused(run(*call, input=written(value)), 1, message)
        for field in fields:
            lacking = run(*call, input=written(without(document, field.keys)))
            with self.subTest(lacking=field.path):
                if isinstance(field.keys[-1], int) or '"]' in field.path[-2:] or field.optional:
                    self.assertEqual((lacking.returncode, lacking.stderr), (0, ""))
                else:
                    self.assert_refused(lacking, 1, f"{field.path}: is missing")
            for value, message in field.wrong():
                with self.subTest(field=field.path, value=value):
                    self.assert_refused(run(*call, input=written(with_value(document, field.keys, value))), 1,
                                        f"{field.path}: {message}")
            for value in field.fitting() + ([None] if field.optional else []):
                with self.subTest(field=field.path, value=value):
                    done = run(*call, input=written(with_value(document, field.keys, value)))
                    self.assertIn(done.returncode, (0, 1), done.stderr)
                    if done.returncode == 1:  # It was taken; a figure that came of it is too large.
                        self.assertRegex(done.stderr, r"\Akestrel: [^\n]*: is not a finite number\n\Z")
                        self.assertEqual(done.stdout, "")

    def assert_what_is_no_json_is_refused(self, call):
        for text, byte in (("", 0), (" \n", 2), ("nonsense", 0), ("[1,", 3), ("{", 1), ("[]]", None), ("[] []", 3),
                           ("'x'", 0), ("\x00", 0), ("[01]", 1), ("[\"a\nb\"]", None)):
            with self.subTest(text=text):
                done = run(*call, input=text)
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertRegex(done.stderr, r"\Akestrel: the document is not well-formed JSON at byte "
                                 + (r"\d+" if byte is None else str(byte)) + r"\n\Z")
        for text, message in (("\ufeff[]", "the document is not well-formed JSON at byte 0"),
                              ("[\"\udcff\"]", "the document is not valid UTF-8"),
                              ("[\"\\ud800\"]", "the document has a malformed escape at byte 2"),
                              ("[" * 513 + "]" * 513, "the document is nested beyond 512 levels at byte 512")):
            with self.subTest(text=text):
                self.assert_refused(run(*call, input=text), 1, message)
