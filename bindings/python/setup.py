# SPDX-License-Identifier: MIT
"""Builds the module with CMake and puts it into the package: one wheel for every Python version."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

from setuptools import setup
from setuptools.command.build_py import build_py
from setuptools.dist import Distribution
from wheel.bdist_wheel import bdist_wheel

HERE = pathlib.Path(__file__).resolve().parent


class BuildWithModule(build_py):
    def run(self):
        super().run()
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["cmake", "-S", HERE, "-B", folder], check=True, stdout=sys.stderr)
            subprocess.run(["cmake", "--build", folder, "--target", "vekch_python"], check=True,
                           stdout=sys.stderr)
            shutil.copy(pathlib.Path(folder, "_vekch.so"), pathlib.Path(self.build_lib, "vekch"))


class PlatformWheel(bdist_wheel):
    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


class BinaryDistribution(Distribution):
    def has_ext_modules(self):
        return True


setup(distclass=BinaryDistribution,
      cmdclass={"build_py": BuildWithModule, "bdist_wheel": PlatformWheel})
