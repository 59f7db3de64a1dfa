"""One screen of the demo as an SVG file, for a page that cannot run it."""

import io
import pathlib

from rich.console import Console, Group
from rich.terminal_theme import TerminalTheme

NORMAL = [(0, 0, 0), (255, 107, 107), (126, 211, 101), (240, 200, 90), (30, 90, 160),
          (200, 130, 220), (90, 200, 220), (225, 228, 232)]
THEME = TerminalTheme((20, 23, 28), (215, 218, 224), NORMAL, NORMAL)

# The page that shows the picture loads no fonts from elsewhere, and the same screen gives the
# same file.
FORMAT = """\
<svg class="rich-terminal" viewBox="0 0 {width} {height}" xmlns="http://www.w3.org/2000/svg"
     xml:space="preserve">
    <style>
    .{unique_id}-matrix {{
        font-family: Menlo, "DejaVu Sans Mono", Consolas, monospace;
        font-size: {char_height}px;
        line-height: {line_height}px;
    }}
    .{unique_id}-title {{
        font-size: 18px;
        font-weight: bold;
        font-family: sans-serif;
    }}
    {styles}
    </style>
    <defs>
    <clipPath id="{unique_id}-clip-terminal">
      <rect x="0" y="0" width="{terminal_width}" height="{terminal_height}" />
    </clipPath>
    {lines}
    </defs>
    {chrome}
    <g transform="translate({terminal_x}, {terminal_y})"
       clip-path="url(#{unique_id}-clip-terminal)">
    {backgrounds}
    <g class="{unique_id}-matrix">
    {matrix}
    </g>
    </g>
</svg>
"""


def save(rows, size, path):
    console = Console(record=True, width=size[0], height=size[1], file=io.StringIO(),
                      force_terminal=True, color_system="truecolor", legacy_windows=False,
                      _environ={})
    console.print(Group(*rows))
    svg = console.export_svg(title="scripts/demo", theme=THEME, code_format=FORMAT,
                             unique_id="demo")
    text = "\n".join(line.rstrip() for line in svg.splitlines()) + "\n"
    pathlib.Path(path).write_text(text, encoding="utf-8")
