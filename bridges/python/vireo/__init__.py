# SPDX-License-Identifier: MIT
"""Chains of the Vireo filters over NumPy arrays.

    >>> import vireo
    >>> chain = vireo.Chain("Levels:(rgb) gamma=130", "Camera Blur:percent blur=0@0s..40@4s")
    >>> out = chain(frame)                      # height x width x 3, uint8, RGB
    >>> for out in chain.stream(frames, rate=25): ...
    >>> vireo.render("in.mp4", "out.mp4", chain, progress=print)

Filters, parameters and values are written as the command line's -f takes them, and pixels are the same. What cannot be
done raises vireo.Error, a ValueError with the sentence that the command line prints.
"""

from ._catalogue import Filter, Filters, Parameter, Preset, filters, presets
from ._chain import Chain, FilterSettings
from ._engine import Error, instruction_set
from ._engine import version as _version
from ._program import render

__all__ = ["Chain", "Error", "Filter", "FilterSettings", "Filters", "Parameter", "Preset"]
__all__ += ["filters", "instruction_set", "presets", "render"]
__version__ = _version()
