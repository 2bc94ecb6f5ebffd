"""Draws docs/images/terminal.svg: runs corvanectl on a terminal, against a server in a directory of its own
with the explorer's sample files, and draws what appears.

    python3 docs/images/terminal.py build > docs/images/terminal.svg
"""
import html
import os
import pty
import re
import shutil
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests"))
from support.server_process import ServerProcess  # noqa: E402

SESSION = ("listDir .", "readText Documents/letter.txt", "makeDir Letters",
           "copy Documents/letter.txt Letters/reply.txt", "readByte explorer.swf 0", "readText missing.txt",
           "getWndRect")
COLUMNS, LINE, LETTER = 100, 18, 7.85
COLOURS = {"1": 'font-weight="bold"', "31": 'fill="#ff7b72"', "32": 'fill="#7ee787"', "33": 'fill="#e3b341"',
           "34": 'fill="#79c0ff"', "35": 'fill="#d2a8ff"', "36": 'fill="#76e3ea"', "2": 'fill="#8b949e"'}


def output_of(command, directory, environment):
    """What a command writes to a terminal."""
    text = bytearray()

    def read(descriptor):
        data = os.read(descriptor, 1 << 16)
        text.extend(data)
        return b" "  # nothing on our own standard output, and not the end

    stdout, null = os.dup(1), os.open(os.devnull, os.O_WRONLY)
    os.dup2(null, 1)
    os.chdir(directory)
    os.environ.update(environment)
    pty.spawn(["sh", "-c", f"stty cols {COLUMNS} rows 24; {command}"], read, lambda _: b"")
    os.dup2(stdout, 1)
    return text.decode().replace("\r\n", "\n")


def drawn(line):
    """A line with its colours as elements of SVG."""
    parts, style = [], ""
    for piece in re.split(r"(\x1b\[[\d;]*[A-Za-z])", line):
        if piece.startswith("\x1b"):
            style = " ".join(filter(None, map(COLOURS.get, piece[2:-1].split(";")))) if piece.endswith("m") else style
        elif piece:
            parts.append(f"<tspan {style}>{html.escape(piece)}</tspan>" if style else html.escape(piece))
    return "".join(parts)


def picture(lines):
    width, height = round(COLUMNS * LETTER) + 32, len(lines) * LINE + 56
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-size="13" fill="#e6edf3" '
           f'font-family="DejaVu Sans Mono, Menlo, monospace">')
    yield f'<rect width="{width}" height="{height}" rx="9" fill="#161b22"/>'
    yield from (f'<circle cx="{20 + 18 * i}" cy="18" r="5.5" fill="{colour}"/>'
                for i, colour in enumerate(("#ff5f57", "#febc2e", "#28c840")))
    yield from (f'<text x="16" y="{50 + LINE * index}" xml:space="preserve">{line}</text>'
                for index, line in enumerate(lines) if line)
    yield "</svg>"


def main(build):
    build = Path(build).resolve()
    with tempfile.TemporaryDirectory() as scratch:
        home = Path(scratch) / "kiosk"
        shutil.copytree(ROOT / "examples/explorer/sample", home)
        tool = {"cvnwinfo": (ROOT / "clients/conformance/cvnwinfo").read_text()}
        with ServerProcess(scratch, build / "corvane", files=tool, work=home, environment={"HOME": str(home)}) as server:
            lines = []
            for command in SESSION:
                lines.append(f'<tspan fill="#7ee787">$</tspan> corvanectl {html.escape(command)}')
                text = output_of(f"'{build}/corvanectl' --port {server.port} {command}", home, {"HOME": str(home)})
                lines += [drawn(line) for line in text.rstrip("\n").split("\n") if text.strip()]
    print("\n".join(picture(lines)))


if __name__ == "__main__":
    main(sys.argv[1])
