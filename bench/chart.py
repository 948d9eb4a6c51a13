"""Bars of our times and those of the libraries, as SVG for a light and a dark page."""

from html import escape

from page import figures_of_work, number, title_of_work

WORKS = ("sign", "verify", "ripemd160", "md5", "sha256")
WIDTH, LABELS, BARS, ROW, GAP = 720, 190, 440, 20, 14
STYLE = """<style>
text { font: 13px sans-serif; fill: #1f2328; }
.title { font-weight: bold; }
.other { fill: #b3bac3; }
.ours { fill: #0969da; }
@media (prefers-color-scheme: dark) {
text { fill: #e6edf3; }
.other { fill: #58616c; }
.ours { fill: #4493f8; }
}
</style>"""


def text(x, y, words, kind=""):
    return f'<text x="{x}" y="{y}"{kind}>{escape(words)}</text>'


def chart(figures):
    """Each work has a scale of its own, to its longest bar; what was not measured has none."""
    lines, y = [], 0
    for work in WORKS:
        items = figures_of_work(work, figures)
        if not items:
            continue
        y += ROW
        lines.append(text(0, y - 5, title_of_work(work, figures), ' class="title"'))
        longest = max(figure for _, figure in items)
        for name, figure in items:
            width = round(BARS * figure / longest, 1)
            kind = "ours" if name.startswith("ours") else "other"
            lines += [text(0, y + ROW - 5, name),
                      f'<rect class="{kind}" x="{LABELS}" y="{y + 3}" width="{width}" height="{ROW - 6}"/>',
                      text(LABELS + width + 6, y + ROW - 5, number(figure))]
            y += ROW
        y += GAP
    size = f'width="{WIDTH}" height="{y}" viewBox="0 0 {WIDTH} {y}"'
    return "\n".join([f'<svg xmlns="http://www.w3.org/2000/svg" {size} role="img">',
                      "<title>Times of this program and of other libraries, shorter is better</title>",
                      STYLE, *lines, "</svg>\n"])
