# SPDX-License-Identifier: MIT
"""Lets the wheel be called after the interpreter and the machine that its binaries are for."""
import setuptools


class BinaryDistribution(setuptools.Distribution):
    def has_ext_modules(self):
        return True


setuptools.setup(distclass=BinaryDistribution)
