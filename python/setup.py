"""Installs the zivor package with the ZIVOR library and its data inside it.

    /usr/bin/python3 -m pip install --no-build-isolation --break-system-packages ./python

builds libZIVOR.so with CMake from the project this directory belongs to
(Release, in build-py/package) and copies it, with the data files that
`cmake --install` installs, into the package. ZIVOR_LIBRARY names a library
built already instead, ZIVOR_SOURCE_DIR the project when pip builds outside
the tree.
"""

import glob
import os
import subprocess

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

HERE = os.path.dirname(os.path.abspath(__file__))
# Data files the library loads: Data/ without its text sources, the
# new-word log, a saved user dictionary or logs.
DATA_LEFT_OUT = ("NewWord.lst", "UserDict.pdat")


def source_dir():
    root = os.environ.get("ZIVOR_SOURCE_DIR") or os.path.dirname(HERE)
    if not os.path.isfile(os.path.join(root, "Data", "Configure.xml")):
        raise SystemExit("zivor: %s is not the ZIVOR project (no Data/Configure.xml); "
                         "set ZIVOR_SOURCE_DIR" % root)
    return root


def built_library(root):
    explicit = os.environ.get("ZIVOR_LIBRARY")
    if explicit:
        return explicit
    build = os.path.join(root, "build-py", "package")
    subprocess.check_call(["cmake", "-S", root, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
                           "-DZIVOR_BUILD_TESTS=OFF", "-DZIVOR_BUILD_BENCH=OFF"])
    env = dict(os.environ)
    env.setdefault("CMAKE_BUILD_PARALLEL_LEVEL", "2")
    subprocess.check_call(["cmake", "--build", build, "--target", "ZIVOR"], env=env)
    return os.path.join(build, "libZIVOR.so")


class BuildWithLibrary(build_py):
    def run(self):
        super().run()
        root = source_dir()
        package = os.path.join(self.build_lib, "zivor")
        library = os.path.realpath(built_library(root))
        self.copy_file(library, os.path.join(package, "libZIVOR.so"))
        data = os.path.join(package, "Data")
        self.mkpath(data)
        for path in sorted(glob.glob(os.path.join(root, "Data", "*"))):
            name = os.path.basename(path)
            if os.path.isfile(path) and name not in DATA_LEFT_OUT and not name.endswith(".log"):
                self.copy_file(path, os.path.join(data, name))
        # An empty new-word log, which the library appends to, so that
        # uninstalling removes it.
        open(os.path.join(data, "NewWord.lst"), "w").close()


class BinaryDistribution(Distribution):
    """The package carries a native library: a platform wheel."""

    def has_ext_modules(self):
        return True


setup(
    name="zivor",
    version="0.1",
    description="Chinese lexical analysis: segmentation, tagging, keywords, new words",
    packages=["zivor"],
    python_requires=">=3.7",
    cmdclass={"build_py": BuildWithLibrary},
    distclass=BinaryDistribution,
    zip_safe=False,
)
