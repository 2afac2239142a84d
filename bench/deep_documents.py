"""Documents of many makers: manuals out of packages, and what the installed writers make."""

import gzip
import pathlib
import subprocess
import sys

from deep_writers import made

# Packages that hold manuals in PDF, for their different makers and languages.
PACKAGES = """
    asymptote-doc bash-doc ddd-doc debian-policy developers-reference developers-reference-de
    developers-reference-fr developers-reference-ja developers-reference-ru doxygen-doc evolver-doc
    flex-doc fonts-hosny-amiri fonts-sil-abyssinica fonts-sil-charis fonts-sil-ezra
    fonts-sil-padauk fonts-sil-scheherazade gnuplot-doc graphviz-doc installation-guide-amd64
    krb5-doc lilypond-doc-pdf maint-guide-fr maint-guide-ja maxima-doc ngspice-doc octave-doc
    pari-doc pstoedit python-tables-doc r-doc-pdf texlive-lang-arabic texlive-lang-cjk valgrind
    xfig-doc xorg-docs zsh-doc
    """.split()
# The rest of a package is as its first ones, and a document of a thousand pages keeps the judge busy.
MOST_OF_A_PACKAGE = 24
MOST_BYTES = 2_000_000


def manuals(cache):
    """The documents of the packages, unpacked; a package that cannot be had is named."""
    for package in PACKAGES:
        folder = cache / "manuals" / package
        if not folder.exists():
            _unpack(cache / "packages", package, folder)
        yield from sorted(folder.glob("*.pdf"))


def _unpack(packages, package, folder):
    packages.mkdir(parents=True, exist_ok=True)
    if not list(packages.glob(package + "_*.deb")):
        subprocess.run(["apt-get", "download", "-q", package], cwd=packages, check=False,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    archives = list(packages.glob(package + "_*.deb"))
    if not archives:
        print(f"Not to be had: {package}", file=sys.stderr)
        return
    tree = packages / package
    subprocess.run(["dpkg-deb", "-x", archives[0], tree], check=True)
    folder.mkdir(parents=True)
    found = sorted(path for pattern in ("*.pdf", "*.pdf.gz") for path in tree.rglob(pattern)
                   if path.is_file() and not path.is_symlink())
    for number, path in enumerate(found[:MOST_OF_A_PACKAGE]):
        content = path.read_bytes()
        if path.suffix == ".gz":
            content = gzip.decompress(content)
        if len(content) <= MOST_BYTES:
            (folder / f"{number:02} {path.name.removesuffix('.gz')}").write_bytes(content)


def obtain(cache, only=""):
    documents = [*manuals(cache), *made(cache)]
    return [path for path in documents if only in str(path)]
