# SPDX-License-Identifier: MIT
"""Chains: filters one after another, with their settings."""

from __future__ import annotations

import itertools
import os
from collections.abc import MutableMapping, Sequence, Sized
from typing import Any, Iterable, Iterator, List, Optional, Tuple, Union, overload

from numpy.typing import ArrayLike

from . import _engine
from ._catalogue import Filter, Value, by_index, value_of
from ._frames import EarlierFrame, Frame, dtypes_of, fetching, order, readable, rendered

NewValue = Union[Value, float, Tuple[int, int, int]]

_ALL_CHANNELS = "(RGB) "
_INTERLACING = {None: 0, "top": 1, "bottom": 2}


class Chain(Sequence["FilterSettings"]):
    """Filters one after another, with their settings.

    filters: each as the command line's -f takes it, "Levels:(rgb) gamma=130", or a Filter
    preset: the name of a ready-made look, which goes before the filters
    threads: how many threads share one frame; the result is the same for any number

    A chain is a sequence of its filters: `chain[0]["gamma"] = 140`, `del chain[1]`, `len(chain)`. Any number of threads
    may render with one chain at once; meanwhile it cannot be changed.
    """

    def __init__(self, *filters: Union[str, Filter, FilterSettings], preset: Optional[str] = None, threads: int = 1):
        self._engine = _engine.Chain()
        self.threads = threads
        if preset is not None:
            self._engine.add_preset(preset)
        for added in filters:
            self.append(added)

    @classmethod
    def load(cls, path: Union[str, os.PathLike[str]], *, threads: int = 1) -> Chain:
        """The chain of a settings file, or Levels as a Levels file sets it."""
        chain = cls(threads=threads)
        chain._engine.add_file(os.fsencode(path))
        return chain

    def save(self, path: Union[str, os.PathLike[str]]) -> None:
        """Writes a settings file. A chain that was loaded and not changed is saved with the same bytes."""
        settings = self._engine.settings().encode("utf-8")
        with open(path, "wb") as file:
            file.write(settings)

    def copy(self) -> Chain:
        """Another chain with the same filters and settings."""
        return _restored(*self.__reduce__()[1])

    @property
    def threads(self) -> int:
        """How many threads share one frame, 1 to 1024."""
        return self._threads

    @threads.setter
    def threads(self, threads: int) -> None:
        self._engine.set_threads(max(threads, 0))
        self._threads = threads

    @property
    def earlier_frames(self) -> int:
        """How many frames back the chain looks."""
        return self._engine.earlier_frames()

    @property
    def dtypes(self) -> Tuple[str, ...]:
        """Of the arrays that the chain renders."""
        return dtypes_of(self._engine.depths())

    def __call__(
        self,
        frame: ArrayLike,
        *,
        number: int = 0,
        frames: int = 0,
        rate: float = 25,
        seconds: Optional[float] = None,
        earlier: Optional[EarlierFrame] = None,
        out: Optional[Frame] = None,
        layout: str = "rgb",
        premultiplied: bool = False,
        interlaced: Optional[str] = None,
    ) -> Frame:
        """Renders a frame: an array of its shape and type, `out` where it is given.

        frame: height x width x 3 (RGB), x 4 (RGB and alpha) or height x width (grey), of uint8 from 0 to 255; Horizontal
            Flip alone also takes uint16 from 0 to 65535 and float32 from 0 to 1. Strides may be any; what does not lie in
            whole rows is copied.
        number, frames: which frame of the clip it is, from 0, and how many there are, 0 for unknown
        rate: frames a second
        seconds: where the frame stands in the clip, where not at number / rate
        earlier: called as earlier(number) for frames that the chain looks back at; without it they are the frame itself
        out: where the result goes; it may be the frame
        layout: "rgb", or "bgr" as OpenCV has it
        premultiplied: whether colours are multiplied by alpha
        interlaced: "top" or "bottom", the field that comes first, where the frame is two fields
        """
        source = readable(frame)
        pixels = order(layout, premultiplied)
        time = _time(number, frames, rate, seconds, interlaced)
        fetch = None if earlier is None else fetching(earlier, source)
        return rendered(lambda a, b: self._engine.render(a, b, pixels, time, fetch), source, out)

    def stream(
        self,
        clip: Iterable[ArrayLike],
        *,
        rate: float = 25,
        number: int = 0,
        frames: Optional[int] = None,
        layout: str = "rgb",
        premultiplied: bool = False,
        interlaced: Optional[str] = None,
    ) -> Iterator[Frame]:
        """Renders frames that come in order, and keeps those that the chain looks back at.

        clip: frames as a call takes them
        number: which frame of the whole clip the first one is
        frames: how many the whole clip has; unless told, the length of `clip` where it has one

        The rest is as for a call. The chain may be changed between frames.
        """
        if frames is None:
            frames = number + len(clip) if isinstance(clip, Sized) else 0
        pixels = order(layout, premultiplied)
        history = _engine.Stream(self._engine)

        def next_one(n: int, frame: ArrayLike) -> Frame:
            time = _time(n, frames or 0, rate, None, interlaced)
            return rendered(lambda a, b: history.render(a, b, pixels, time), readable(frame), None)

        return map(next_one, itertools.count(number), clip)

    def append(self, added: Union[str, Filter, FilterSettings]) -> None:
        """Adds a filter, or several with ";" between them."""
        self._engine.add_text(str(added))

    def move(self, position: int, to: int) -> None:
        """Moves the filter at a position to another one."""
        self._engine.move(self._position(position), self._position(to))

    def __len__(self) -> int:
        return self._engine.length()

    @overload
    def __getitem__(self, position: int) -> FilterSettings: ...

    @overload
    def __getitem__(self, position: slice) -> List[FilterSettings]: ...

    def __getitem__(self, position: Union[int, slice]) -> Union[FilterSettings, List[FilterSettings]]:
        if isinstance(position, slice):
            return [FilterSettings(self, n) for n in range(len(self))[position]]
        return FilterSettings(self, self._position(position))

    def __delitem__(self, position: int) -> None:
        self._engine.remove(self._position(position))

    def __str__(self) -> str:
        return self._engine.text()

    def __repr__(self) -> str:
        words = [_quoted(str(settings)) for settings in self] + [f"threads={self.threads}"] * (self.threads != 1)
        return f"vireo.Chain({', '.join(words)})"

    def __reduce__(self) -> Any:
        return _restored, (self._engine.settings() if self else "", self.threads)

    def __copy__(self) -> Chain:
        return self.copy()

    def _position(self, position: int) -> int:
        try:
            return range(len(self))[position]
        except IndexError:
            raise IndexError("the chain has no filter at this position") from None


class FilterSettings(MutableMapping[str, Value]):
    """The settings of the filter at a position of a chain, by parameter.

    Names may be shortened as in -f, and Levels' "(RGB)" may be left out. Values are taken as -f takes them,
    "0@0s..40@4s", "40%", "red", and as numbers, True and False, and (r, g, b). They are read as int, bool or "#rrggbb",
    key frames as their text. "from", "to" and "mix" belong to every filter. `del` gives a parameter its start value.
    """

    def __init__(self, chain: Chain, position: int):
        self._chain = chain
        self._position = position

    @property
    def filter(self) -> Filter:
        return by_index()[self._chain._engine.filter(self._position)]

    def is_set(self, name: str) -> bool:
        """Whether a parameter was given a value."""
        return self._chain._engine.is_set(self._position, self._index(name))

    def at(
        self, name: str, *, number: int = 0, frames: int = 0, rate: float = 25, seconds: Optional[float] = None
    ) -> Value:
        """A parameter's value at a moment of the clip, told as for Chain's call; mix in per cent."""
        index = self._index(name)
        value = self._chain._engine.value_at(self._position, index, _time(number, frames, rate, seconds, None))
        return value_of(self._kind(index), value)

    def __getitem__(self, name: str) -> Value:
        index = self._index(name)
        text = self._chain._engine.get(self._position, index)
        kind = self._kind(index)
        if kind == "boolean" and text in ("true", "false"):
            return text == "true"
        try:
            return int(text) if kind == "number" else text
        except ValueError:
            return text

    def __setitem__(self, name: str, value: NewValue) -> None:
        self._chain._engine.set(self._position, self._index(name), _text(value))

    def __delitem__(self, name: str) -> None:
        self._chain._engine.unset(self._position, self._index(name))

    def __iter__(self) -> Iterator[str]:
        return (parameter.name for parameter in self.filter.parameters)

    def __len__(self) -> int:
        return len(self.filter.parameters)

    def __contains__(self, name: object) -> bool:
        try:
            self._index(str(name))
        except _engine.Error:
            return False
        return True

    def __str__(self) -> str:
        return self._chain._engine.filter_text(self._position)

    def __repr__(self) -> str:
        return str(self)

    def _index(self, name: str) -> int:
        find = self._chain._engine.find_parameter
        try:
            return find(self._position, name)
        except _engine.Error as error:
            unknown = error
        try:
            return find(self._position, _ALL_CHANNELS + name)
        except _engine.Error:
            raise unknown from None

    def _kind(self, index: int) -> str:
        return self.filter.parameters[index].kind if index >= 0 else "text"


def _restored(settings: str, threads: int) -> Chain:
    chain = Chain(threads=threads)
    if settings:
        chain._engine.add_settings(settings)
    return chain


def _time(number: int, frames: int, rate: float, seconds: Optional[float], interlaced: Optional[str]) -> _engine.Time:
    try:
        interlacing = _INTERLACING[interlaced]
    except KeyError:
        raise _engine.Error(f'interlaced is "top" or "bottom", not {interlaced!r}') from None
    return _engine.Time(number, frames, float(rate), -1 if seconds is None else seconds, interlacing)


def _text(value: NewValue) -> str:
    return f"rgb{value}" if isinstance(value, tuple) else str(value)


def _quoted(text: str) -> str:
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'
