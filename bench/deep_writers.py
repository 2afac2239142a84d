"""Makes documents with every writer of PDF that is installed; those that are not are named."""

import concurrent.futures
import html
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from deep_texts import RIGHT_TO_LEFT, SENTENCES, WITHOUT_BLANKS, paragraphs, table
from programs import installed

LATIN = ["en", "de", "fr", "pl", "cs"]
SANS = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
SECONDS = 120


def call(command, folder):
    """Runs a writer; what it cannot make is missing afterwards."""
    try:
        subprocess.run([str(part) for part in command], cwd=folder, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                       timeout=SECONDS, check=False,
                       env={**os.environ, "SOURCE_DATE_EPOCH": "1600000000", "HOME": str(folder)})
    except subprocess.TimeoutExpired:
        pass


# TeX

def tex_escaped(text):
    return "".join("\\" + sign if sign in "&%$#_{}" else sign for sign in text)


def tex_body(language, seed):
    def shown(text):
        if language in WITHOUT_BLANKS:
            return r"\hskip0ptplus1pt ".join(text)
        return tex_escaped(text)

    rows = r" \\ ".join(" & ".join(map(shown, row)) for row in table(language, seed, 6))
    text = [shown(paragraph) for paragraph in paragraphs(language, seed, 24)]
    if language in RIGHT_TO_LEFT:
        text = [r"\rtl{" + paragraph + "}" for paragraph in text]
    half = len(text) // 2
    return "\n\n".join([*text[:half], r"\begin{tabular}{lll}" + rows + r"\end{tabular}",
                        *text[half:]])


def tex_document(language, seed, preamble, options="twocolumn"):
    return (rf"\documentclass[{options}]{{article}}" + preamble + r"\begin{document}"
            + "\n" + tex_body(language, seed) + "\n" + r"\end{document}" + "\n")


PDFTEX = {
    "computer modern": "",
    "latin modern": r"\usepackage[T1]{fontenc}\usepackage{lmodern}",
    "bitmaps": r"\usepackage[T1]{fontenc}",
    "times": r"\usepackage[T1]{fontenc}\usepackage{times}",
    "standard encoding": r"\usepackage{times}",
    "uncompressed": r"\pdfcompresslevel0 \pdfobjcompresslevel0 ",
    "unicode maps": r"\input glyphtounicode \pdfgentounicode=1 "
                    r"\usepackage[T1]{fontenc}\usepackage{lmodern}",
    "old": r"\pdfminorversion=3 \pdfobjcompresslevel0 \usepackage{palatino}",
}


def pdftex(folder):
    jobs = []
    for number, (name, preamble) in enumerate(PDFTEX.items()):
        # Times has no ogonek of its own.
        known = ["en", "de", "fr"] if name == "times" else LATIN if "T1" in preamble else ["en"]
        for language in known:
            jobs.append((f"pdftex {name} {language}", tex_document(language, number, preamble)))
    run_tex(folder, "pdflatex", jobs)


def dvi(folder):
    for number, (name, preamble) in enumerate(list(PDFTEX.items())[:5]):
        targets = [folder / f"{program} {name}.pdf" for program in ("dvipdfmx", "dvips")]
        if all(target.exists() for target in targets):
            continue
        with tempfile.TemporaryDirectory() as scratch:
            scratch = pathlib.Path(scratch)
            (scratch / "a.tex").write_text(tex_document("en", 20 + number, preamble))
            call(["latex", "-interaction=batchmode", "a.tex"], scratch)
            call(["dvipdfmx", "-o", targets[0], "a.dvi"], scratch)
            call(["dvips", "-q", "-o", "a.ps", "a.dvi"], scratch)
            call(["ps2pdf", "a.ps", targets[1]], scratch)


def unicode_tex(folder, program, right_to_left):
    jobs = []
    for number, language in enumerate(SENTENCES):
        font = (r"\setmainfont[Path=/usr/share/fonts/truetype/wqy/]{wqy-microhei.ttc}"
                if language in WITHOUT_BLANKS else
                r"\setmainfont[Path=/usr/share/fonts/truetype/dejavu/]{DejaVuSans.ttf}")
        plain = r"\usepackage{fontspec}"
        for name, preamble in (("dejavu", plain + font), ("default", plain)):
            if name == "dejavu" or language in LATIN:
                jobs.append((f"{program} {name} {language}", tex_document(
                    language, number, preamble + r"\newcommand\rtl[1]{" + right_to_left + "}")))
    run_tex(folder, program, jobs)


def xetex(folder):
    unicode_tex(folder, "xelatex", r"\TeXXeTstate=1 \beginR #1\endR")


def luatex(folder):
    unicode_tex(folder, "lualatex", r"{\pardir TRT\textdir TRT #1\par}")


def run_tex(folder, program, jobs):
    for name, text in jobs:
        if (folder / f"{name}.pdf").exists():
            continue
        with tempfile.TemporaryDirectory() as scratch:
            scratch = pathlib.Path(scratch)
            (scratch / "a.tex").write_text(text)
            call([program, "-interaction=batchmode", "a.tex"], scratch)
            if (scratch / "a.pdf").exists():
                shutil.move(scratch / "a.pdf", folder / f"{name}.pdf")


# Pages of the web

def web_page(language, seed, style):
    def shown(text):
        if style != "hyphens":
            return html.escape(text)
        return " ".join(word[:4] + "\u00ad" + word[4:] if len(word) > 8 else word
                        for word in html.escape(text).split(" "))

    side = "rtl" if language in RIGHT_TO_LEFT else "ltr"
    css = {"plain": "", "hyphens": "text-align: justify; hyphens: manual",
           "columns": "column-count: 2; hyphens: auto; text-align: justify",
           "spaced": "letter-spacing: 0.06em; font-family: monospace",
           "serif": "font-family: 'DejaVu Serif'; font-style: italic; line-height: 1.1"}[style]
    family = "WenQuanYi Micro Hei" if language in WITHOUT_BLANKS else "DejaVu Sans"
    rows = "".join("<tr>" + "".join(f"<td>{shown(cell)}</td>" for cell in row) + "</tr>"
                   for row in table(language, seed))
    text = "".join(f"<p>{shown(paragraph)}</p>" for paragraph in paragraphs(language, seed))
    return (f'<!DOCTYPE html><html lang="{language}" dir="{side}"><meta charset="utf-8">'
            f"<title>{style}</title><style>body {{ font-family: '{family}'; {css} }}</style>"
            f"<h1>{shown(table(language, seed)[0][0])}</h1>{text}<table>{rows}</table>{text}</html>")


def web_pages(languages):
    for number, language in enumerate(languages):
        styles = ["plain", "columns"]
        if language in LATIN:
            styles += ["hyphens", "spaced", "serif"]
        for style in styles:
            yield f"{style} {language}", web_page(language, number, style)


def chromium(folder):
    for name, text in web_pages(SENTENCES):
        target = folder / f"chromium {name}.pdf"
        if not target.exists():
            with tempfile.TemporaryDirectory() as scratch:
                page = pathlib.Path(scratch) / "a.html"
                page.write_text(text)
                call([installed("chromium", "chromium-browser"), "--headless", "--no-sandbox",
                      "--disable-gpu", f"--user-data-dir={scratch}/profile",
                      f"--print-to-pdf={target}", page.as_uri()], scratch)


def weasyprint(folder):
    # The judge reads what it writes from right to left the wrong way round.
    for name, text in web_pages([one for one in SENTENCES if one not in RIGHT_TO_LEFT]):
        target = folder / f"weasyprint {name}.pdf"
        if not target.exists():
            with tempfile.TemporaryDirectory() as scratch:
                (pathlib.Path(scratch) / "a.html").write_text(text)
                call(["weasyprint", "a.html", target], scratch)


# LibreOffice

FILTERS = {
    "plain": "",
    "archive": ':{"SelectPdfVersion":{"type":"long","value":"1"}}',
    "tagged": ':{"UseTaggedPDF":{"type":"boolean","value":"true"}}',
    "secret": ':{"RestrictPermissions":{"type":"boolean","value":"true"},'
              '"PermissionPassword":{"type":"string","value":"owner"}}',
}


def flat_text(language, seed):
    """A text document in two columns, justified, with hyphens."""
    family = "WenQuanYi Micro Hei" if language in WITHOUT_BLANKS else "DejaVu Serif"
    side = "rl-tb" if language in RIGHT_TO_LEFT else "lr-tb"
    text = "".join(f'<text:p text:style-name="P">{html.escape(paragraph)}</text:p>'
                   for paragraph in paragraphs(language, seed, 20))
    rows = "".join("<table:table-row>" + "".join(
        f"<table:table-cell><text:p>{html.escape(cell)}</text:p></table:table-cell>"
        for cell in row) + "</table:table-row>" for row in table(language, seed))
    spaces = "".join(f' xmlns:{name}="urn:oasis:names:tc:opendocument:xmlns:{full}:1.0"'
                     for name, full in [("office", "office"), ("text", "text"), ("table", "table"),
                                        ("style", "style"), ("fo", "xsl-fo-compatible")])
    return f"""<?xml version="1.0" encoding="UTF-8"?>
<office:document{spaces} office:version="1.2" office:mimetype="application/vnd.oasis.opendocument.text">
<office:automatic-styles>
<style:style style:name="P" style:family="paragraph"><style:paragraph-properties
 fo:text-align="justify" fo:margin-bottom="0.2cm" style:writing-mode="{side}"/>
<style:text-properties fo:font-family="'{family}'" style:font-family-asian="'{family}'"
 style:font-family-complex="'DejaVu Sans'" fo:font-size="10pt" fo:hyphenate="true"
 fo:language="{language}" fo:country="US"/></style:style>
<style:style style:name="S" style:family="section"><style:section-properties>
<style:columns fo:column-count="2" fo:column-gap="0.5cm"/></style:section-properties></style:style>
</office:automatic-styles><office:body><office:text>
<text:section text:style-name="S" text:name="s">{text}</text:section>
<table:table table:name="t"><table:table-column table:number-columns-repeated="3"/>{rows}
</table:table></office:text></office:body></office:document>"""


def libreoffice(folder):
    for name, settings in FILTERS.items():
        with tempfile.TemporaryDirectory() as scratch:
            scratch = pathlib.Path(scratch)
            sources = []
            for number, language in enumerate(SENTENCES):
                if name != "plain" and language not in ("en", "de", "ru", "ja", "ar"):
                    continue
                source = scratch / f"libreoffice {name} {language}.fodt"
                if not (folder / (source.stem + ".pdf")).exists():
                    source.write_text(flat_text(language, number))
                    sources.append(source)
            if sources:
                call(["soffice", "--headless", f"-env:UserInstallation=file://{scratch}/profile",
                      "--convert-to", "pdf:writer_pdf_Export" + settings, "--outdir", folder,
                      *sources], scratch)


# groff

def groff(folder):
    for number, language in enumerate(LATIN):
        for name, options, head in [("one column", [], ""), ("two columns", [], ".2C\n"),
                                    ("helvetica", ["-fH"], ".2C\n"),
                                    ("not filled", [], ".ad l\n")]:
            target = folder / f"groff {name} {language}.pdf"
            if target.exists():
                continue
            cells = "\n".join("\t".join(row) for row in table(language, number))
            text = "\n".join(".PP\n" + paragraph for paragraph in paragraphs(language, number, 30))
            source = f"{head}.hy 1\n{text}\n.TS\nl l l.\n{cells}\n.TE\n"
            with tempfile.TemporaryDirectory() as scratch:
                (pathlib.Path(scratch) / "a.ms").write_text(source)
                with open(target, "wb") as output:
                    subprocess.run(["groff", "-Kutf8", "-t", "-ms", "-Tpdf", *options, "a.ms"],
                                   cwd=scratch, stdout=output, stderr=subprocess.DEVNULL,
                                   check=False)


# cairo and ReportLab, by their Python modules in processes of their own

CAIRO = r"""
import sys, textwrap, cairo
target, family, size, columns, *paragraphs = sys.argv[1:]
surface = cairo.PDFSurface(target, 595, 842)
context = cairo.Context(surface)
context.select_font_face(family)
context.set_font_size(float(size))
y = 60
for paragraph in paragraphs:
    for line in textwrap.wrap(paragraph, int(columns)) + [""]:
        context.move_to(50, y)
        context.show_text(line)
        y += float(size) * 1.3
        if y > 780:
            context.show_page()
            y = 60
surface.finish()
"""

REPORTLAB = r"""
import sys
from reportlab.lib.styles import ParagraphStyle
from reportlab.pdfbase import pdfmetrics
from reportlab.pdfbase.cidfonts import UnicodeCIDFont
from reportlab.pdfbase.ttfonts import TTFont
from reportlab.lib.pdfencrypt import StandardEncryption
from reportlab.platypus import Paragraph, SimpleDocTemplate
target, font, way, *paragraphs = sys.argv[1:]
if font.endswith(".ttf"):
    pdfmetrics.registerFont(TTFont("F", font))
    font = "F"
elif font.startswith(("Heisei", "STSong")):
    pdfmetrics.registerFont(UnicodeCIDFont(font))
secret = StandardEncryption("", "owner", strength=int(way)) if way.isdigit() else None
document = SimpleDocTemplate(target, pageCompression=0 if way == "loose" else 1, encrypt=secret)
cjk = "CJK" if font.startswith(("Heisei", "STSong")) else None
style = ParagraphStyle("P", fontName=font, fontSize=10, leading=13, alignment=4, wordWrap=cjk)
document.build([Paragraph(text, style) for text in paragraphs])
"""


def cairo(folder):
    for number, language in enumerate(SENTENCES):
        for family in ("DejaVu Sans", "DejaVu Serif", "Nimbus Roman"):
            if language in RIGHT_TO_LEFT or (family[0] == "N" and language not in LATIN):
                continue
            used = "WenQuanYi Micro Hei" if language in WITHOUT_BLANKS else family
            target = folder / f"cairo {family} {language}.pdf"
            if not target.exists():
                call(["/usr/bin/python3", "-c", CAIRO, target, used, "10",
                      "40" if language in WITHOUT_BLANKS else "70",
                      *paragraphs(language, number)], folder)


def reportlab(folder):
    jobs = [("en", font, way) for font in ("Helvetica", "Times-Roman", "Courier")
            for way in ("tight", "loose", "40", "128", "256")]
    jobs += [(language, SANS, way) for language in [*LATIN, "el", "ru"] for way in ("tight", "128")]
    jobs += [(language, "Helvetica", "tight") for language in ("de", "fr")]
    jobs += [("ja", "HeiseiMin-W3", "tight"), ("ja", "HeiseiKakuGo-W5", "loose"),
             ("zh", "STSong-Light", "tight")]
    for number, (language, font, way) in enumerate(jobs):
        target = folder / f"reportlab {pathlib.Path(font).stem} {way} {language}.pdf"
        if not target.exists():
            call(["/usr/bin/python3", "-c", REPORTLAB, target, font, way,
                  *paragraphs(language, number)], folder)


# What is written again

def sources(folder, most):
    """Some of the documents made so far, of different writers and languages."""
    wanted = ["chromium columns de", "chromium plain ja", "groff two columns en",
              "libreoffice plain ru", "libreoffice plain en", "pdftex latin modern fr",
              "pdftex bitmaps en", "pdftex computer modern en", "weasyprint columns el",
              "xelatex dejavu ru", "lualatex dejavu el", "reportlab STSong-Light tight zh",
              "chromium plain ar", "cairo DejaVu Sans pl"]
    found = [path for name in wanted for path in folder.parent.glob(f"*/{name}.pdf")]
    return found[:most]


def ghostscript(folder):
    ways = {"1.3": ["-dCompatibilityLevel=1.3"], "1.7": ["-dCompatibilityLevel=1.7"],
            "loose": ["-dCompressPages=false", "-dCompressFonts=false"],
            "ascii": ["-dASCII85EncodePages=true"], "screen": ["-dPDFSETTINGS=/screen"]}
    for source in sources(folder, 10):
        for name, options in ways.items():
            target = folder / f"ghostscript {name} of {source.name}"
            if not target.exists():
                call(["gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-sDEVICE=pdfwrite", *options,
                      f"-sOutputFile={target}", source], folder)


def printed_by_cairo(folder):
    for source in sources(folder, 14):
        target = folder / f"pdftocairo of {source.name}"
        if not target.exists():
            call(["pdftocairo", "-pdf", source, target], folder)


QPDF = {
    "object streams": ["--object-streams=generate"],
    "no object streams": ["--object-streams=disable"],
    "to be read": ["--qdf"], "linear": ["--linearize"],
    "linear object streams": ["--linearize", "--object-streams=generate"],
    "uncompressed": ["--stream-data=uncompress"],
    "not recompressed": ["--stream-data=preserve", "--newline-before-endstream"],
    "compressed anew": ["--recompress-flate", "--compression-level=9"],
    "one content": ["--coalesce-contents", "--normalize-content=y"],
    "rc4 40": ["--allow-weak-crypto", "--encrypt", "", "owner", "40", "--"],
    "rc4 128": ["--allow-weak-crypto", "--encrypt", "", "owner", "128", "--use-aes=n", "--"],
    "rc4 crypt filter": ["--allow-weak-crypto", "--encrypt", "", "owner", "128", "--use-aes=n",
                         "--force-V4", "--"],
    "aes 128": ["--encrypt", "", "owner", "128", "--use-aes=y", "--"],
    "aes 128 clear metadata": ["--encrypt", "", "owner", "128", "--use-aes=y",
                               "--cleartext-metadata", "--"],
    "aes 256": ["--encrypt", "", "owner", "256", "--"],
    "aes 256 revision 5": ["--allow-weak-crypto", "--encrypt", "", "owner", "256", "--force-R5",
                           "--"],
    "aes 256 object streams": ["--object-streams=generate", "--encrypt", "", "owner", "256", "--"],
    "aes 256 linear": ["--linearize", "--encrypt", "", "owner", "256", "--"],
}


def qpdf(folder):
    for source in sources(folder, 5):
        for name, options in QPDF.items():
            target = folder / f"qpdf {name} of {source.name}"
            if not target.exists():
                call(["qpdf", *options, source, target], folder)


def has_module(name):
    return subprocess.run(["/usr/bin/python3", "-c", f"import {name}"], check=False,
                          stderr=subprocess.DEVNULL).returncode == 0


# What is needed, its package, the function; the last ones write again what the others made.
WRITERS = [
    ("groff", "groff", groff), ("pdflatex", "texlive-latex-base", pdftex),
    ("dvips", "texlive-latex-base", dvi), ("xelatex", "texlive-xetex", xetex),
    ("lualatex", "texlive-luatex", luatex), ("chromium", "chromium", chromium),
    ("weasyprint", "weasyprint", weasyprint), ("soffice", "libreoffice-writer-nogui", libreoffice),
    ("module cairo", "python3-cairo", cairo), ("module reportlab", "python3-reportlab", reportlab),
]
WRITERS_AGAIN = [
    ("gs", "ghostscript", ghostscript), ("pdftocairo", "poppler-utils", printed_by_cairo),
    ("qpdf", "qpdf", qpdf),
]


def made(cache):
    """The documents that the installed writers make."""
    for group in (WRITERS, WRITERS_AGAIN):
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for program, package, write in group:
                kind, _, module = program.partition(" ")
                if not (has_module(module) if kind == "module" else installed(program)):
                    print(f"Not installed, and so without its documents: {package}",
                          file=sys.stderr)
                    continue
                folder = cache / "made" / write.__name__
                folder.mkdir(parents=True, exist_ok=True)
                pool.submit(write, folder)
    return sorted(path for path in (cache / "made").glob("*/*.pdf") if path.stat().st_size > 0)
