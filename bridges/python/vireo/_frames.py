# SPDX-License-Identifier: MIT
"""Arrays as the engine takes them: rows anywhere, but each row's numbers side by side."""

from __future__ import annotations

from typing import Any, Callable, Optional, Tuple

import numpy
from numpy.typing import ArrayLike, NDArray

from . import _engine

Frame = NDArray[Any]
EarlierFrame = Callable[[int], Optional[ArrayLike]]

_DEPTHS = {8: "uint8", 16: "uint16", 32: "float32"}
_TYPES = (numpy.uint8, numpy.uint16, numpy.float32)
_ORDERS = {
    (layout, premultiplied): _engine.PixelOrder(layout == "bgr", premultiplied)
    for layout in ("rgb", "bgr")
    for premultiplied in (False, True)
}


def dtypes_of(depths: int) -> Tuple[str, ...]:
    """The types that the engine's set of depths stands for."""
    return tuple(name for depth, name in _DEPTHS.items() if depths & depth)


def order(layout: str, premultiplied: bool) -> _engine.PixelOrder:
    try:
        return _ORDERS[layout, bool(premultiplied)]
    except KeyError:
        raise _engine.Error(f'a layout is "rgb" or "bgr", not {layout!r}') from None


def readable(frame: ArrayLike) -> Frame:
    """The frame itself where the engine can read it, else a copy."""
    array = numpy.asarray(frame)
    if array.dtype.type not in _TYPES:
        raise _engine.Error(f"a frame's numbers are uint8, uint16 or float32, not {array.dtype}")
    if array.ndim != 2 and (array.ndim != 3 or array.shape[2] not in (3, 4)):
        shape = " x ".join(map(str, array.shape))
        raise _engine.Error(f"a frame is height x width, or that x 3 or 4, not {shape or 'a number'}")
    if _has_whole_rows(array):
        return array
    return numpy.array(array, dtype=array.dtype.newbyteorder("="), order="C")


def rendered(render: Callable[[Frame, Frame], None], source: Frame, out: Optional[Frame]) -> Frame:
    """Calls `render` for a readable source and what becomes the result: `out`, where there is one."""
    if out is None:
        result = numpy.empty(source.shape, source.dtype)
        render(source, result)
        return result
    if not isinstance(out, numpy.ndarray) or out.shape != source.shape or out.dtype.type is not source.dtype.type:
        raise _engine.Error("out is an array of the frame's shape and type")
    if not out.flags.writeable:
        raise _engine.Error("out cannot be written")
    if _has_whole_rows(out):
        render(source, out)
        return out
    result = numpy.empty(source.shape, source.dtype)
    render(source, result)
    out[...] = result
    return out


def fetching(earlier: EarlierFrame, source: Frame) -> Callable[[int, memoryview], bool]:
    """What asks for an earlier frame and puts it where the engine wants it."""

    def fetch(number: int, target: memoryview) -> bool:
        frame = earlier(number)
        if frame is None:
            return False
        array = numpy.asarray(frame)
        if array.shape != source.shape or array.dtype.type is not source.dtype.type:
            raise _engine.Error(f"frame {number} has not the shape and type of the frame that is rendered")
        numpy.copyto(numpy.asarray(target), array)
        return True

    return fetch


def _has_whole_rows(array: Frame) -> bool:
    if not (array.dtype.isnative and array.flags.aligned):
        return False
    if array.flags.c_contiguous:
        return True
    pixel = array.itemsize if array.ndim == 2 else array.itemsize * array.shape[2]
    return (
        array.strides[1] == pixel
        and array.strides[-1] == array.itemsize
        and abs(array.strides[0]) >= pixel * array.shape[1]
    )
