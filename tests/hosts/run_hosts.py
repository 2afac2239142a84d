#!/usr/bin/env python3
"""Builds hosts against the library as somebody has it, and runs them.

Usage: run_hosts.py KIND WORK-FOLDER BUILD-FOLDER

KIND is `private` for copies of the build's files in the folder of an application, `installed` for an
installation that has been moved, or `system` for the system's packages, which need no BUILD-FOLDER.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parents[2]
CC, CXX = os.environ.get("CC", "cc"), os.environ.get("CXX", "c++")

# A page with a text that only a deep search finds.
PDF = b"""%PDF-1.4
1 0 obj <</Type /Catalog /Pages 2 0 R>> endobj
2 0 obj <</Type /Pages /Kids [3 0 R] /Count 1>> endobj
3 0 obj <</Type /Page /Parent 2 0 R /Contents 4 0 R /MediaBox [0 0 99 99]
/Resources <</Font <</F <</Type /Font /Subtype /Type1 /BaseFont /Helvetica>>>>>>>> endobj
4 0 obj <</Length 37>> stream
BT /F 9 Tf 9 9 Td (sunflower) Tj ET
endstream endobj
trailer <</Root 1 0 R>>
"""


def run(*command, **options):
    command = [str(word) for word in command]
    result = subprocess.run(command, capture_output=True, text=True, timeout=200, **options)
    if result.returncode != 0:
        sys.exit(f"{' '.join(command)}\n{result.stdout}{result.stderr}code {result.returncode}")
    return result.stdout


def has_package(name):
    return subprocess.run(["pkg-config", "--exists", name], check=False).returncode == 0


class Kind:
    """Where the library lies, and how hosts are built against it."""

    def __init__(self, work):
        self.work = work

    def build(self, source, *options, compiler=CC):
        program = self.work / "hosts" / pathlib.Path(source).stem
        program.parent.mkdir(exist_ok=True)
        run(compiler, source, "-o", program, *options, *self.flags())
        return program


class System(Kind):
    def __init__(self, work, _build):
        super().__init__(work)
        self.libraries = pathlib.Path(run("pkg-config", "--variable=libdir", "searchsystem").strip())
        self.ssfind = "ssfind"

    def flags(self):
        return run("pkg-config", "--cflags", "--libs", "searchsystem").split()


class Installed(System):
    def __init__(self, work, build):
        run("cmake", "--install", build, "--prefix", work / "first")
        (work / "first").rename(work / "moved")
        pc = next((work / "moved").rglob("searchsystem.pc"))
        os.environ["PKG_CONFIG_PATH"] = str(pc.parent)
        super().__init__(work, build)
        self.ssfind = work / "moved/bin/ssfind"

    def flags(self):
        return [*super().flags(), f"-Wl,-rpath,{self.libraries}"]


class Private(Kind):
    """All in one folder, beside the host."""

    def __init__(self, work, build):
        super().__init__(work)
        self.include = build / "include"
        self.libraries = work / "hosts"
        self.libraries.mkdir()
        for name in ("libSearchSystem.so.0", "libsearchsystem-platform.so.0", "searchsystem-reader",
                     "hosts/ssfind/ssfind"):
            shutil.copy(build / name, self.libraries)
        self.ssfind = self.libraries / "ssfind"

    def flags(self):
        return [f"-I{self.include}", "-Wl,-rpath,$ORIGIN",
                *(self.libraries / name for name in ("libSearchSystem.so.0",
                                                     "libsearchsystem-platform.so.0"))]


def make_files(folder):
    folder.mkdir()
    for name in ("A.pdf", "b.jpg"):
        (folder / name).touch()
    (folder / "deep").mkdir()
    (folder / "deep/page.pdf").write_bytes(PDF)
    for number in range(50):
        (folder / f"deep/beach {number}.jpg").touch()


def run_example(files, *command, **options):
    """A first search, of names with `beach`, is cancelled for a second one."""
    lines = run(*command, files, "beach", "page", **options).splitlines()
    if lines[-1:] != [f"{files}/deep/page.pdf"] or not all("/beach" in line for line in lines[:-1]) \
            or len(lines) == 1:
        sys.exit(f"{command[0]} printed\n" + "\n".join(lines))


def run_examples(kind, files):
    run_example(files, kind.build(SOURCE / "examples/poll.c"))
    ran = ["poll"]
    if has_package("glib-2.0"):
        options = run("pkg-config", "--cflags", "--libs", "glib-2.0").split()
        run_example(files, kind.build(SOURCE / "examples/glib.c", *options))
        ran.append("glib")
    if has_package("Qt6Core"):
        options = ["-std=c++20", "-fPIC", *run("pkg-config", "--cflags", "--libs", "Qt6Core").split()]
        run_example(files, kind.build(SOURCE / "examples/qt.cpp", *options, compiler=CXX))
        ran.append("qt")
    environment = dict(os.environ, LD_LIBRARY_PATH=str(kind.libraries))
    run_example(files, sys.executable, SOURCE / "examples/search.py", env=environment)
    print("examples:", *ran, "python")


def run_readme_example(kind, files):
    program = re.search(r"^```c\n(.*?)^```", (SOURCE / "README.md").read_text(), re.DOTALL | re.MULTILINE)
    source = kind.work / "readme.c"
    source.write_text(program[1])
    if run(kind.build(source), files, "page") != f"{files}/deep/page.pdf\n":
        sys.exit("the example in README.md has not found its file")


def run_cmake_package(kind):
    project = kind.work / "project"
    project.mkdir()
    (project / "CMakeLists.txt").write_text(f"""cmake_minimum_required(VERSION 3.16)
project(Host LANGUAGES C CXX)
find_package(SearchSystem 0.1 REQUIRED)
add_executable(host {SOURCE}/examples/poll.c)
target_link_libraries(host PRIVATE SearchSystem::SearchSystem)
""")
    run("cmake", "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={kind.work}/moved")
    run("cmake", "--build", project / "build")


def run_plugin_hosts(kind, files, build):
    """The host links nothing of the library: it opens the plug-in's file."""
    host = kind.work / "hosts/PluginHost"
    include = [flag for flag in kind.flags() if str(flag).startswith("-I")]
    run(CC, SOURCE / "tests/hosts/PluginHost.c", "-o", host, *include, "-ldl")
    copies = []
    for name in ("one", "two"):
        folder = kind.work / name
        folder.mkdir()
        for library in ("libSearchSystem.so.0", "libsearchsystem-platform.so.0"):
            shutil.copy(kind.libraries / library, folder)
        copies.append(folder / "libSearchSystem.so.0")
    # Without a run path, as packages have them, copies find each other by the environment.
    environment = dict(os.environ)
    if isinstance(kind, System) and not isinstance(kind, Installed):
        environment["LD_LIBRARY_PATH"] = str(copies[0].parent)
    for task in (["alone", copies[0]], ["fork", copies[0]], ["same", copies[0], copies[0]],
                 ["copies", *copies]):
        run(host, *task, files, env=environment)
    if build and (build / "tests/hosts/next").is_dir():
        run(host, "refused", copies[0], build / "tests/hosts/next/libSearchSystem.so", files)


def main():
    name, work, *rest = sys.argv[1:]
    work, build = pathlib.Path(work).resolve(), pathlib.Path(rest[0]).resolve() if rest else None
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    files = work / "files"
    make_files(files)
    kind = {"private": Private, "installed": Installed, "system": System}[name](work, build)

    flat = work / "flat"
    flat.mkdir()
    for file in ("A.pdf", "b.jpg"):
        shutil.copy(files / file, flat)
    run(kind.build(SOURCE / "tests/hosts/HostTest.c"), flat)
    run_plugin_hosts(kind, flat, build)
    run_readme_example(kind, files)
    run_examples(kind, files)
    if run(kind.ssfind, files, "-k", "sunflower") != f"{files}/deep/page.pdf\n":
        sys.exit("ssfind has not found the text of a document")
    if isinstance(kind, System):
        run_cmake_package(kind)


if __name__ == "__main__":
    main()
