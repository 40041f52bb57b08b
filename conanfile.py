"""The recipe for Conan 2. Nobody has run it: Conan was not available where it was written.

  conan create . --build=missing
"""
import os

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout


class VancoreXml(ConanFile):
    name = "vancorexml"
    version = "0.1.0"
    description = "XML documents with positions, diagnostics and renames"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "tool": [True, False]}
    default_options = {"shared": True, "tool": False, "boost/*:header_only": True}
    exports_sources = ("CMakeLists.txt", "art-cpp/*", "cmake/*", "extras/*", "metrics2/*", "vancoredata/*",
                       "vancoreplatform/*", "vancorexml/*", "vansys/*", "vanxml/*",
                       "docs/vanxml.md")  # the manual pages are made from it

    def requirements(self):
        # The public headers include those of Qt.
        self.requires("qt/[>=5.15 <6]", transitive_headers=True, transitive_libs=True)
        self.requires("xerces-c/[>=3.2 <3.3]")
        self.requires("boost/[>=1.74]")
        if self.options.tool:
            self.requires("cli11/[>=2.1 <3]")

    def build_requirements(self):
        # For lrelease and rcc.
        self.tool_requires("qt/<host_version>", options={"qttools": True})

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["BUILD_SHARED_LIBS"] = bool(self.options.shared)
        toolchain.cache_variables["VANCOREXML_DEVELOPER"] = False
        toolchain.cache_variables["VANCOREXML_TOOL"] = bool(self.options.tool)
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # CMake projects use the package of the installation, which also links what the libraries need.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs.append(os.path.join("lib", "cmake", "vancorexml"))
        self.cpp_info.libs = ["vancorexml", "art-cpp", "metrics2", "vancoredata", "vansys", "vancoreplatform"]
        if not self.options.shared:
            self.cpp_info.defines.append("VANCOREXML_STATIC")
            self.cpp_info.exelinkflags.append("-Wl,-u,_Z25qInitResources_vancorexmlv")
