# SPDX-License-Identifier: MIT
"""Which filters there are, and their parameters."""

from __future__ import annotations

import base64
import functools
import html
import pathlib
from dataclasses import dataclass, field
from typing import Any, List, Tuple, Union

from . import _engine
from ._frames import dtypes_of

Value = Union[int, bool, str]

_ANY_SIZE = 2**31 - 1
_PICTURES = pathlib.Path(__file__).with_name("pictures")
_PICTURE_WIDTH = 144


def value_of(kind: str, number: int) -> Value:
    """A value of a kind of parameter, as the engine has it."""
    return bool(number) if kind == "boolean" else f"#{number:06x}" if kind == "colour" else number


@dataclass(frozen=True, repr=False)
class Parameter:
    """What can be set of a filter.

    kind: "number", "boolean" or "colour"
    minimum, maximum: what numbers may be, both ends included
    display_minimum, display_maximum, unit: the same as people read it; unit is "%", "px", "°" or empty
    default: of a fresh filter; colours are "#rrggbb"
    takes_percent: whether "40%" is a value
    choices: words that stand for the numbers from `minimum` on
    """

    name: str
    label: str
    kind: str
    minimum: float
    maximum: float
    display_minimum: float
    display_maximum: float
    unit: str
    default: Value
    takes_percent: bool
    choices: Tuple[str, ...]

    def __repr__(self) -> str:
        return f"{self.name}={self._values()}"

    def _values(self) -> str:
        if self.kind == "boolean":
            return "on/off"
        return "#rrggbb" if self.kind == "colour" else f"{self.minimum:g}..{self.maximum:g}"


@dataclass(frozen=True, repr=False)
class Filter:
    """One of the filters.

    name, key, match_name, id: what it goes by in a chain, whole or by an unambiguous beginning
    reads_time: whether its picture changes with the frame's number
    earlier_frames: how many frames back it looks
    dtypes: of the arrays that it renders
    maximum_width, maximum_height: the largest frames that it takes, in pixels; None for any
    """

    name: str
    category: str
    id: int
    key: str
    match_name: str
    parameters: Tuple[Parameter, ...]
    reads_time: bool
    earlier_frames: int
    dtypes: Tuple[str, ...]
    maximum_width: Union[int, None]
    maximum_height: Union[int, None]
    _file_name: str = field(repr=False)

    def __str__(self) -> str:
        return self.name

    def __repr__(self) -> str:
        return self.name + ":" * bool(self.parameters) + ",".join(map(repr, self.parameters))

    def _picture(self) -> str:
        try:
            picture = (_PICTURES / f"{self._file_name.replace('_', '-')}.jpg").read_bytes()
        except OSError:
            return ""
        data = base64.b64encode(picture).decode("ascii")
        return f'<img width="{_PICTURE_WIDTH}" alt="{html.escape(self.name)}" src="data:image/jpeg;base64,{data}">'


class Filters(List[Filter]):
    """The filters, which a notebook shows as a table with pictures."""

    def __repr__(self) -> str:
        return "\n".join(map(repr, self))

    def _repr_html_(self) -> str:
        left = ' style="text-align: left"'
        rows = "".join(
            f"<tr><td>{f._picture()}</td><td{left}><b>{html.escape(f.name)}</b><br>{html.escape(f.category)}</td>"
            f"<td{left}>{'<br>'.join(map(_parameter_html, f.parameters))}</td></tr>"
            for f in self
        )
        return f"<table><tr><th></th><th{left}>Filter</th><th{left}>Parameters</th></tr>{rows}</table>"


@dataclass(frozen=True)
class Preset:
    """A ready-made look, and the settings file that it is."""

    name: str
    description: str
    file: str


def filters() -> Filters:
    """The filters, in the order of their names.

    >>> for f in vireo.filters(): print(f.name, [p.name for p in f.parameters])
    """
    return Filters(sorted(by_index(), key=lambda f: f.name))


def presets() -> List[Preset]:
    """The presets, the user's own and those that came with the engine."""
    return [Preset(**entry) for entry in _engine.presets()]


@functools.lru_cache(maxsize=None)
def by_index() -> Tuple[Filter, ...]:
    return tuple(_filter(**entry) for entry in _engine.filters())


def _filter(
    parameters: List[Any],
    depths: int,
    maximum_width: int,
    maximum_height: int,
    maximum_row_bytes: int,
    file_name: str,
    **texts: Any,
) -> Filter:
    width = min(maximum_width, maximum_row_bytes // 4 if maximum_row_bytes < _ANY_SIZE else _ANY_SIZE)
    return Filter(
        parameters=tuple(_parameter(**entry) for entry in parameters),
        dtypes=dtypes_of(depths),
        maximum_width=width if width < _ANY_SIZE else None,
        maximum_height=maximum_height if maximum_height < _ANY_SIZE else None,
        _file_name=file_name,
        **texts,
    )


def _parameter(initial: int, choices: List[str], **texts: Any) -> Parameter:
    return Parameter(default=value_of(texts["kind"], initial), choices=tuple(choices), **texts)


def _parameter_html(parameter: Parameter) -> str:
    default = ("off", "on")[parameter.default] if isinstance(parameter.default, bool) else parameter.default
    return f"{html.escape(repr(parameter))} ({default})"
