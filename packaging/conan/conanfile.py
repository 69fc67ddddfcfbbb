# SPDX-License-Identifier: MIT
"""Conan 2: conan create packaging/conan -b missing"""

import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class VekchRecipe(ConanFile):
    name = "vekch"
    version = "2021.12.0"
    license = "MIT AND Unicode-3.0"
    description = "String primitives for 64-bit x86 with SSE3"
    topics = ("string", "regular expressions", "utf-8", "simd")
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False]}
    default_options = {"shared": True}
    package_type = "library"

    def export_sources(self):
        tree = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "LICENSE", "NOTICE", "README.md", "SECURITY.md", "cmake/*",
                        "docs/*", "frame/*", "include/*", "regexp/*", "strings/*", "tools/*", "unicode/*",
                        "packaging/windows/*"):
            copy(self, pattern, tree, self.export_sources_folder)

    def validate(self):
        if self.settings.arch != "x86_64":
            raise ConanInvalidConfiguration("vekch is for x86_64")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.variables["VEKCH_BUILD_EXAMPLES"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        for name in ("LICENSE", "NOTICE"):
            copy(self, name, self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.libs = ["vekchm7"]
        self.cpp_info.set_property("cmake_file_name", "vekch")
        self.cpp_info.set_property("cmake_target_name", "vekch::vekch")
        self.cpp_info.set_property("pkg_config_name", "vekch")
        if not self.options.shared:
            self.cpp_info.defines = ["VEKCH_STATIC"]
