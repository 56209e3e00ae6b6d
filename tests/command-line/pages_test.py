"""The man pages and completions as they are installed, tried in the shells and the reader that they are for."""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

PAGES = pathlib.Path(os.environ["PAGES"])
PROGRAMS = {"tidewell-scan": os.environ["TIDEWELL_SCAN"],
            "tidewell-sample-history": os.environ["TIDEWELL_SAMPLE_HISTORY"],
            "kestrel": os.environ["KESTREL"]}


def output(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", check=False,
                          timeout=120, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}: {done.stdout}")
    return done.stdout


def options(program, *command):
    """The options that the help lists."""
    listed = output(PROGRAMS[program], *command, "--help").split("\nOptions:\n")[1].split("\n\n")[0]
    return re.findall(r"(?<!\S)--?[a-z-]+", "\n".join(re.findall(r"^  (-.*?)(?:  |$)", listed, re.MULTILINE)))


def commands(program, *command):
    """The commands right below that one."""
    parts = output(PROGRAMS[program], *command, "--help").split("\nCommands:\n")
    listed = re.findall(r"^  ((?:\S+ ?)+)(?: |$)", parts[1].split("\n\n")[0], re.MULTILINE) if len(parts) == 2 else []
    return list(dict.fromkeys(name.split()[0] for name in listed))


def calls(program, *command):
    """All ways to call the program: alone, and with each command."""
    yield list(command)
    for inner in commands(program, *command):
        yield from calls(program, *command, inner)


CALLS = [(program, call) for program in PROGRAMS for call in calls(program)]


def bash(program, *words):
    """What bash offers for the last of `words`."""
    script = f"""
        source {shlex.quote(str(PAGES / "bash" / program))}
        compopt() {{ :; }}  # It works only while a person presses the key.
        COMP_WORDS=({shlex.join([program, *words])})
        COMP_CWORD={len(words)}
        $(complete -p {program} | sed 's/.*-F \\([^ ]*\\) .*/\\1/')
        printf '%s\\n' "${{COMPREPLY[@]}}"
    """
    return [line for line in output("bash", "-euc", script, cwd=tempfile.gettempdir()).splitlines() if line]


class Pages(unittest.TestCase):
    def test_man_pages_pass_the_lint(self):
        for program in PROGRAMS:
            output("mandoc", "-T", "lint", "-W", "error", PAGES / f"man/{program}.1")

    def test_man_pages_say_what_the_help_says(self):
        for program, call in CALLS:
            page = output("mandoc", "-T", "utf8", "-O", "width=1000", PAGES / f"man/{program}.1")
            page = " ".join(re.sub(".\b", "", page).split())
            text = output(PROGRAMS[program], *call, "--help")
            if commands(program, *call):
                text = re.sub(r"\nCommands:\n.*?\n\n", "\n", text, flags=re.DOTALL)
                if call:  # It only groups the commands, which the page lists itself.
                    continue
            usage, rest = text.split("\n\n", 1)
            usage = " ".join(usage.removeprefix("Usage: ").split())
            if call:  # The page says of each command what only that one takes.
                usage = usage.removesuffix(" [--timezone ID] [--pretty] [--help] [--version]")
            for part in [usage, *re.split(r"\n\n|\n  (?=\S)|(?:Arguments|Options|Exit status|Example):\n", rest)]:
                for piece in re.split(r"\s{2,}(?=\S)", " ".join(part.split(" ")).strip(), maxsplit=1):
                    self.assertIn(" ".join(piece.split()), page, (program, call))

    def test_man_pages_have_a_section_for_each_command(self):
        page = re.sub(".\b", "", output("mandoc", "-T", "utf8", PAGES / "man/kestrel.1"))
        listed = re.findall(r"^   (kestrel .*)$", page, re.MULTILINE)
        self.assertEqual(listed, [" ".join([program, *call]) for program, call in CALLS
                                  if program == "kestrel" and call not in ([], ["circadian"], ["log"], ["store"])])
        self.assertIn("kestrel circadian features", listed)

    def test_man_pages_break_no_name_at_80_columns(self):
        for program in PROGRAMS:
            page = PAGES / f"man/{program}.1"
            for reader in (["mandoc", "-T", "utf8", "-O", "width=80", page],
                           ["groff", "-man", "-T", "utf8", "-rLL=80n", page]):
                text = re.sub("\x1b\\[[0-9;]*m|.\b", "", output(*reader))
                self.assertEqual([line for line in text.splitlines() if re.search(r"\w[-\u2010]$", line)], [], reader)
                for word in re.findall(r"[\w.:/+-]*(?:[.:/+-]\w|[a-z][A-Z])[\w.:/+-]*", output(PROGRAMS[program], "--help")):
                    self.assertIn(word.rstrip(".:"), text, reader)

    def test_completions_are_well_formed_to_their_shells(self):
        for program in PROGRAMS:
            output("bash", "-n", PAGES / "bash" / program)
            output("zsh", "-n", PAGES / f"zsh/_{program}")
            output("fish", "--no-execute", PAGES / f"fish/{program}.fish")

    def test_an_option_takes_a_value_in_all_commands_or_in_none(self):
        for program in PROGRAMS:
            synopses = set()
            for _, call in [entry for entry in CALLS if entry[0] == program]:
                usage = output(PROGRAMS[program], *call, "--help").split("\n\n")[0]
                synopses |= set(re.findall(r"(--[a-z-]+)( [A-Z]+)?", usage))
            self.assertEqual(len({name for name, _ in synopses}), len({(name, bool(value)) for name, value in synopses}))

    def test_bash_completes_options(self):
        for program, call in CALLS:
            self.assertEqual(sorted(bash(program, *call, "-")), sorted(options(program, *call)), call)
            self.assertEqual(sorted(bash(program, *call, "--")),
                             sorted(option for option in options(program, *call) if option.startswith("--")), call)
        self.assertEqual(bash("tidewell-scan", "--da"), ["--days", "--database"])
        self.assertEqual(bash("tidewell-scan", "--json", "--pr"), ["--pretty"])
        self.assertEqual(bash("tidewell-scan", "--days", ""), [])

    def test_bash_completes_commands(self):
        self.assertEqual(bash("kestrel", "st"), ["states", "state", "store"])
        self.assertEqual(bash("kestrel", "--pretty", "--timezone", "circadian", "sl"), ["sleep"])
        self.assertEqual(bash("kestrel", "--timezone", "=", "circadian", "sl"), ["sleep"])
        self.assertEqual(bash("kestrel", "circadian", ""), ["features", "classify", "--timezone", "--pretty", "-h", "--help",
                                                            "--version"])
        self.assertEqual(bash("kestrel", "--gap", "5", "circadian", "--pretty", "f"), ["features"])
        self.assertEqual(bash("kestrel", "sleep", "--ga"), ["--gap"])
        self.assertEqual(bash("kestrel", "state", "sl"), [])
        self.assertEqual(bash("kestrel", "sleep", "--gap", ""), [])

    def test_bash_completes_paths(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "one history.db"
            path.touch()
            start = str(path)[:-8]
            self.assertEqual(bash("tidewell-scan", "--database", start), [str(path)])
            self.assertEqual(bash("tidewell-scan", "--database", "=", start), [str(path)])
            self.assertEqual(bash("tidewell-sample-history", start), [str(path)])
            for call in (["baseline"], ["circadian", "features"], ["--gap", "30", "sleep"]):
                self.assertEqual(bash("kestrel", *call, start), [str(path)])
            self.assertEqual(bash("kestrel", "states", start), [])

    def test_bash_completion_is_found_by_name(self):
        # The bash-completion package loads a file that bears the program's name.
        with tempfile.TemporaryDirectory() as folder:
            completions = pathlib.Path(folder) / "bash-completion/completions"
            completions.mkdir(parents=True)
            for program in PROGRAMS:
                (completions / program).write_bytes((PAGES / "bash" / program).read_bytes())
                found = output("bash", "-c", f"source /usr/share/bash-completion/bash_completion && "
                                             f"__load_completion {program} && complete -p {program}",
                               env={**os.environ, "XDG_DATA_HOME": folder})
                self.assertRegex(found, rf"complete -F \w+ {program}")

    def fish(self, program, *words):
        """What fish offers for the last of `words`, with what it says of each."""
        script = f"source {shlex.quote(str(PAGES / 'fish' / program))}.fish; complete -C {shlex.quote(' '.join([program, *words]))}"
        with tempfile.TemporaryDirectory() as home:
            offered = output("fish", "--no-config", "-c", script, env={**os.environ, "HOME": home}, cwd=home)
        return [line.split("\t")[0] for line in offered.splitlines()]

    def test_fish_completes_options(self):
        for program, call in CALLS:
            offered = self.fish(program, *call, "--")
            self.assertEqual(sorted(offered), sorted(option for option in options(program, *call) if option.startswith("--")))
        self.assertEqual(self.fish("kestrel", "circadian", "features", "-"), self.fish("kestrel", "baseline", "-"))

    def test_fish_completes_commands(self):
        self.assertEqual(sorted(self.fish("kestrel", "")), sorted(commands("kestrel")))
        self.assertEqual(sorted(self.fish("kestrel", "circadian", "")), ["classify", "features"])
        self.assertEqual(self.fish("kestrel", "--timezone", "circadian", "sl"), ["sleep"])
        self.assertEqual(self.fish("kestrel", "--gap", "5", "--pretty", "circadian", "f"), ["features"])
        self.assertEqual(self.fish("kestrel", "states", ""), [])
        self.assertEqual(self.fish("kestrel", "sleep", "--gap", ""), [])

    def zsh(self, program, keys, last):
        """What a shell in a terminal of its own shows up to `last` when `keys` are pressed after the program's name."""
        with tempfile.TemporaryDirectory() as home:
            script = f"""
                zmodload zsh/zpty
                zpty shell zsh -f -i
                zpty -w shell "PROMPT=; fpath=({PAGES}/zsh \\$fpath); autoload -U compinit; compinit -u -D"
                zpty -w shell "LISTMAX=1000; setopt nobeep; bindkey '^I' complete-word; COLUMNS=200; print R''EADY"
                zpty -r shell text '*READY*'
                zpty -n -w shell $'{program} {keys}'
                while zpty -r shell text '*{last}*'; do print -r -- "$text"; break; done
                zpty -d shell
            """
            return output("zsh", "-fc", script, env={**os.environ, "HOME": home, "TERM": "dumb"}, cwd=home)

    def test_zsh_completes_options(self):
        for program, call in CALLS:
            offered = self.zsh(program, " ".join([*call, "--"]) + "\\t\\t", "version")
            for option in options(program, *call):
                if option.startswith("--"):
                    self.assertIn(option, offered)

    def test_zsh_completes_commands(self):
        offered = self.zsh("kestrel", "--pretty \\t\\t", "trend *-- compare")  # the last of them
        for command in commands("kestrel"):
            self.assertRegex(offered, rf"{command} +-- ")
        offered = self.zsh("kestrel", "circadian \\t\\t", "features *-- work")
        self.assertRegex(offered, "classify +-- tell the state of a day")
        self.assertIn("--gap", self.zsh("kestrel", "sleep --g\\t", "--gap"))

    def test_zsh_completes_paths(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("first.json", "second.json"):
                (pathlib.Path(folder) / name).touch()
            for call in ("shadow", "circadian classify --pretty", "--pretty sleep --gap 30"):
                self.assertIn("first.json", self.zsh("kestrel", f"{call} {folder}/\\t\\t", "second.json"))


if __name__ == "__main__":
    unittest.main()
