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
            "tidewell-sample-history": os.environ["TIDEWELL_SAMPLE_HISTORY"]}


def output(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", check=False,
                          timeout=120, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}: {done.stdout}")
    return done.stdout


def options(program):
    """The long options that the help lists."""
    listed = output(PROGRAMS[program], "--help").split("\nOptions:\n")[1].split("\n\n")[0]
    return re.findall(r"^  (?:-\w, )?(--[a-z-]+)", listed, re.MULTILINE)


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
        for program in PROGRAMS:
            page = output("mandoc", "-T", "utf8", "-O", "width=1000", PAGES / f"man/{program}.1")
            page = " ".join(re.sub(".\b", "", page).split())
            text = output(PROGRAMS[program], "--help")
            usage, rest = text.split("\n\n", 1)
            for part in [usage.removeprefix("Usage: "), *re.split(r"\n\n|\n  (?=\S)|(?:Arguments|Options|Exit status|Example):\n",
                                                                 rest)]:
                for piece in re.split(r"\s{2,}(?=\S)", " ".join(part.split(" ")).strip(), maxsplit=1):
                    self.assertIn(" ".join(piece.split()), page, program)

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

    def test_bash_completes_options(self):
        for program in PROGRAMS:
            self.assertEqual(sorted(bash(program, "--")), sorted(options(program)))
        self.assertEqual(bash("tidewell-scan", "--da"), ["--days", "--database"])
        self.assertEqual(bash("tidewell-scan", "--json", "--pr"), ["--pretty"])
        self.assertEqual(bash("tidewell-scan", "--days", ""), [])

    def test_bash_completes_paths(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "one history.db"
            path.touch()
            start = str(path)[:-8]
            self.assertEqual(bash("tidewell-scan", "--database", start), [str(path)])
            self.assertEqual(bash("tidewell-scan", "--database", "=", start), [str(path)])
            self.assertEqual(bash("tidewell-sample-history", start), [str(path)])

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

    def test_fish_completes_options(self):
        for program in PROGRAMS:
            script = f"source {shlex.quote(str(PAGES / 'fish' / program))}.fish; complete -C '{program} --'"
            with tempfile.TemporaryDirectory() as home:
                offered = output("fish", "--no-config", "-c", script, env={**os.environ, "HOME": home})
            self.assertEqual(sorted(line.split("\t")[0] for line in offered.splitlines()), sorted(options(program)))

    def test_zsh_completes_options(self):
        # A shell in a terminal of its own, in which the key is pressed.
        for program in PROGRAMS:
            with tempfile.TemporaryDirectory() as home:
                script = f"""
                    zmodload zsh/zpty
                    zpty shell zsh -f -i
                    zpty -w shell "PROMPT=; fpath=({PAGES}/zsh \\$fpath); autoload -U compinit; compinit -u -D"
                    zpty -w shell "LISTMAX=1000; setopt nobeep; bindkey '^I' complete-word; COLUMNS=200; print R''EADY"
                    zpty -r shell text '*READY*'
                    zpty -n -w shell $'{program} --\\t\\t'
                    while zpty -r shell text '*version*'; do print -r -- "$text"; break; done
                    zpty -d shell
                """
                offered = output("zsh", "-fc", script, env={**os.environ, "HOME": home, "TERM": "dumb"})
            for option in options(program):
                self.assertIn(option, offered)


if __name__ == "__main__":
    unittest.main()
