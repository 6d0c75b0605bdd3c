# SPDX-License-Identifier: MIT
"""Files through chains, by way of the program vireo, which knows containers, encoders and sound."""

from __future__ import annotations

import os
import pty
import re
import shutil
import subprocess
import warnings
from typing import Callable, Iterator, List, Optional, Sequence, Union

from ._chain import Chain
from ._engine import Error

Progress = Callable[[int, Optional[int]], object]

# Beside the package in a wheel, in a build, and in an installation.
_PLACES = ("bin/vireo", "../../bin/vireo", "../../../../bin/vireo")
_FRAME = re.compile(r"frame (\d+)(?: of (\d+))?,")
_DONE = re.compile(r": (\d+) frames? in [\d.]+ s$")
_SAYS, _WARNING = "vireo: ", "warning: "
_STYLE = re.compile("\x1b\\[[0-9;]*[mK]")


def render(
    input: Union[str, os.PathLike[str]],
    output: Union[str, os.PathLike[str]],
    chain: Union[Chain, str],
    *,
    overwrite: bool = False,
    progress: Optional[Progress] = None,
    arguments: Sequence[str] = (),
) -> None:
    """Renders a picture, a sequence ("frame%04d.png") or a clip with its sound into a file.

    chain: a Chain, or what -f takes
    overwrite: whether an output that is there is replaced
    progress: called as progress(frame, frames) a few times a second and at the end; frames is None while it is not known
    arguments: further words for `vireo render`, such as ["--start", "2s", "--encoder", "libx265"]

    The work is done by the program vireo: the one that VIREO_PROGRAM in the environment names, else the one that lies beside
    this package, else the one in PATH. What it tells beside its progress becomes a Python warning.
    """
    made = chain if isinstance(chain, Chain) else Chain(chain)
    filters = [word for settings in made for word in ("-f", str(settings))]
    if not filters:
        raise Error("a chain without filters renders no file")
    command = [find_program(), "render", os.fspath(input), os.fspath(output), *filters, *arguments]
    for sentence in _run(command + ["--overwrite"] * overwrite, progress):
        warnings.warn(sentence, stacklevel=2)


def find_program() -> str:
    named = os.environ.get("VIREO_PROGRAM")
    if named:
        return named
    for place in _PLACES:
        program = os.path.normpath(os.path.join(os.path.dirname(__file__), place))
        if os.access(program, os.X_OK):
            return program
    found = shutil.which("vireo")
    if found is None:
        raise Error("there is no program vireo beside the package or in PATH; VIREO_PROGRAM says where it is")
    return found


def _run(command: Sequence[str], progress: Optional[Progress]) -> List[str]:
    """Runs the program to its end. What it said beside its progress."""
    # Only to a terminal the program tells at once how far it is.
    reading, writing = os.pipe() if progress is None else pty.openpty()
    environment = {**os.environ, "TERM": "xterm", "NO_COLOR": "1"}
    try:
        process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=writing, env=environment
        )
    except OSError as error:
        os.close(reading)
        raise Error(f"cannot run {command[0]}: {error.strerror}") from None
    finally:
        os.close(writing)
    said = []
    try:
        for line in _lines(reading):
            frame = _FRAME.match(line)
            if frame is None:
                said.append(line)
            elif progress is not None:
                progress(int(frame[1]), int(frame[2]) if frame[2] else None)
    except BaseException:
        process.terminate()
        raise
    finally:
        os.close(reading)
        status = process.wait()
    sentences = [line[len(_SAYS) :].rstrip(".") for line in said if line.startswith(_SAYS)]
    if status != 0:
        raise Error((sentences or said or [f"vireo ended with status {status}"])[-1])
    done = _DONE.search(sentences[-1]) if sentences else None
    if done is not None:
        sentences.pop()
        if progress is not None:
            progress(int(done[1]), int(done[1]))
    return [sentence[len(_WARNING) :] if sentence.startswith(_WARNING) else sentence for sentence in sentences]


def _lines(file: int) -> Iterator[str]:
    """The lines of a file descriptor, written over or not."""
    rest = b""
    while True:
        try:
            read = os.read(file, 65536)
        except OSError:  # how a terminal ends
            read = b""
        *lines, rest = re.split(rb"[\r\n]+", rest + read)
        for line in lines + [rest] * (not read):
            text = _STYLE.sub("", line.decode("utf-8", "replace"))
            if text:
                yield text
        if not read:
            return
