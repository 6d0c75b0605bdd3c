# SPDX-License-Identifier: MIT
"""The manual page, and completion in the shells themselves."""
import os
import re
import select
import subprocess
import time

import pytest

from conftest import PROGRAM


def complete(vireo, line):
    """The kind of files that may follow, and the words."""
    kind, *lines = vireo("complete", line).stdout.decode().splitlines()
    return kind, [text.split("\t")[0] for text in lines]


@pytest.mark.parametrize("line, kind, words", [
    ("vireo rend", "words", ["render"]),
    ("vireo --language f", "words", ["fr"]),
    ("vireo render a.png --ov", "words", ["--overwrite"]),
    ("vireo render a.png ", "files", []),
    ("vireo render a.png --to ", "folders", []),
    ("vireo render --jobs ", "words", []),
    ("vireo compare a.png b.png c", "words", []),
    ("vireo compare --layout=be", "words", ["--layout=beside", "--layout=below"]),
    ("vireo compare --preset cya", "words", ["cyanotype"]),
    ("vireo info black", "words", ["BlackAndWhite"]),
    ("vireo render -f COLOR", "words", ["ColorBalanceRGB:", "ColorPass:", "ColorReplace:"]),
    ("vireo render -f sol:t", "words", ["sol:Threshold=", "sol:to="]),
    ("vireo render -f 'Color Replace:target color=rgb(1,2,3), so", "words", ["Color Replace:target color=rgb(1,2,3),SolidColors="]),
    (r"vireo render -f Color\ Replace:solid=o", "words", ["Color Replace:solid=on", "Color Replace:solid=off"]),
    ("vireo render --filter Solarize:threshold=", "words", ["Solarize:threshold=128"]),
    ("vireo render --filter Ghosting:", "words", ["Ghosting:from=", "Ghosting:to=", "Ghosting:mix="]),
    ("vireo completion ", "words", ["bash", "zsh", "fish", "powershell"]),
    ("vireo nothing --no", "words", ["--no-sandbox"]),
])
def test_what_may_follow(vireo, line, kind, words):
    assert complete(vireo, line) == (kind, words)


class Terminal:
    """A shell that sits at a terminal. Its prompt is READY>."""

    def __init__(self, folder, command, **environment):
        self.ours, theirs = os.openpty()
        self.shell = subprocess.Popen(
            command, cwd=folder, stdin=theirs, stdout=theirs, stderr=theirs, start_new_session=True,
            env={**os.environ, "TERM": "xterm", "HOME": str(folder), "PS1": "READY>",
                 "PATH": f"{folder}:{os.environ['PATH']}", **environment})
        os.close(theirs)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.shell.kill()
        self.shell.wait()
        os.close(self.ours)

    def type(self, keys):
        os.write(self.ours, keys.encode())

    def wait_for(self, text, seconds=30):
        seen, end = b"", time.monotonic() + seconds
        while text.encode() not in seen:
            assert select.select([self.ours], [], [], max(0, end - time.monotonic()))[0], seen
            seen += os.read(self.ours, 4096)
        return seen.decode(errors="replace")

    def words_of(self, keys):
        """What the shell takes for the words of a line that was typed with these keys."""
        self.type(keys + "\x01printf '<%s>' \x05; echo '|'END\r")
        return re.search(r"((?:<[^<>]*>)+)\|END", self.wait_for("|END")).group(1)


@pytest.fixture
def program_in_path(vireo):
    (vireo.folder / "vireo").symlink_to(PROGRAM)
    (vireo.folder / "photo.png").write_bytes(b"")
    return vireo


LINES = {
    "vireo rend\tphoto\t-f sol\tthr\t1": "<vireo><render><photo.png><-f><Solarize:Threshold=1>",
    "vireo info color\tb\t": "<vireo><info><ColorBalanceRGB>",
    "vireo compare --lay\tsp\t--preset vh\t": "<vireo><compare><--layout><split><--preset><vhs>",
}


def install(program, shell, name):
    file = program.folder / name
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_bytes(program("completion", shell).stdout)
    return program.folder


def test_bash_completes(program_in_path):
    folder = install(program_in_path, "bash", "share/bash-completion/completions/vireo")
    with Terminal(folder, ["bash", "--norc", "--noprofile", "-i"], XDG_DATA_HOME=str(folder / "share")) as bash:
        bash.type("bind 'set bell-style none'; source /usr/share/bash-completion/bash_completion\r")
        for keys, words in LINES.items():
            assert bash.words_of(keys) == words
        assert bash.words_of('vireo render -f "Color R\t') == "<vireo><render><-f><ColorReplace:>"


def test_zsh_completes(program_in_path):
    folder = install(program_in_path, "zsh", "functions/_vireo")
    with Terminal(folder, ["zsh", "-f", "-i"]) as zsh:
        zsh.type(f"fpath=({folder}/functions $fpath); autoload -Uz compinit; compinit -u -d {folder}/dump; "
                 "bindkey -e; unsetopt BEEP PROMPT_SP; echo '|'SET\r")
        zsh.wait_for("|SET")
        for keys, words in LINES.items():
            assert zsh.words_of(keys) == words


def test_fish_completes(program_in_path):
    folder = install(program_in_path, "fish", "vireo.fish")
    for line, words in (("vireo rend", ["render"]), ("vireo render -f Solarize:thr", ["Solarize:Threshold="]),
                        ("vireo render pho", ["photo.png"]), ("vireo compare --layout sp", ["split"])):
        found = subprocess.run(
            ["fish", "--no-config", "-c", f"source vireo.fish; complete -C '{line}'"], cwd=folder, check=True, capture_output=True,
            env={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}", "HOME": str(folder)}).stdout.decode()
        assert [text.split("\t")[0] for text in found.splitlines()] == words, line


def test_manual_page_has_no_faults(vireo):
    page = vireo.folder / "vireo.1"
    page.write_bytes(vireo("man").stdout)
    shown = subprocess.run(["man", "--warnings", "-l", page], check=True, capture_output=True,
                           env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100"})
    assert shown.stderr == b""
    text = " ".join(shown.stdout.decode().split())
    examples = re.findall(r"^  (vireo .*)", vireo("--help").stdout.decode(), re.MULTILINE)
    assert len(examples) > 5
    for words in ("-f, --filter FILTER", "Threshold (0 to 254, 128)", "cyanotype", "EXIT STATUS", "130", *examples):
        assert " ".join(words.split()) in text, words
