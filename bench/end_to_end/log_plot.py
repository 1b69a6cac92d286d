"""A plot of a few lines on two logarithmic axes, as SVG: enough to see whether something grows as its input does."""

import math
from xml.sax.saxutils import escape

WIDTH, HEIGHT = 640, 400
LEFT, RIGHT, TOP, BOTTOM = 70, 170, 20, 50
COLOURS = ["#0b62a8", "#c2410c", "#15803d", "#7e22ce"]


def decades(values):
    """The powers of ten around all values."""
    return math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)) + 1e-9)


def compact(power, unit):
    for scale, prefix in (9, "G"), (6, "M"), (3, "k"), (0, ""), (-3, "m"), (-6, "µ"):
        if power >= scale:
            return f"{10 ** (power - scale)} {prefix}{unit}".strip()
    return f"1e{power} {unit}".strip()


def log_plot(x_title, y_unit, lines):
    """`lines`: name → points (x, y), all above 0. A thin grey line shows what grows as x does."""
    (x_low, x_high), (y_low, y_high) = (decades([point[axis] for points in lines.values() for point in points])
                                        for axis in (0, 1))
    y_high = max(y_high, y_low + 1)
    x_high = max(x_high, x_low + 1)

    def place(x, y):
        across = (math.log10(x) - x_low) / (x_high - x_low)
        up = (math.log10(y) - y_low) / (y_high - y_low)
        return LEFT + across * (WIDTH - LEFT - RIGHT), HEIGHT - BOTTOM - up * (HEIGHT - TOP - BOTTOM)

    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" '
           f'font-size="12">', f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>']

    def line(start, end, colour, width):
        (x1, y1), (x2, y2) = start, end
        svg.append(f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
                   f'stroke-width="{width}"/>')

    def text(x, y, anchor, words, colour="#333"):
        svg.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}">{escape(words)}</text>')

    for power in range(x_low, x_high + 1):
        foot = place(10**power, 10**y_low)
        line(foot, place(10**power, 10**y_high), "#ddd", 1)
        text(foot[0], foot[1] + 18, "middle", compact(power, ""))
    for power in range(y_low, y_high + 1):
        foot = place(10**x_low, 10**power)
        line(foot, place(10**x_high, 10**power), "#ddd", 1)
        text(foot[0] - 6, foot[1] + 4, "end", compact(power, y_unit))
    text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 10, "middle", x_title)
    for number, (name, points) in enumerate(lines.items()):
        colour = COLOURS[number % len(COLOURS)]
        x_last, y_last = points[-1]
        x_first = max(points[0][0], x_last * 10**y_low / y_last)
        line(place(x_first, y_last * x_first / x_last), place(x_last, y_last), "#bbb", 1)
        path = " ".join("{:.1f},{:.1f}".format(*place(x, y)) for x, y in points)
        svg.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        x, y = place(x_last, y_last)
        text(x + 8, y + 4, "start", name, colour)
    return "\n".join(svg + ["</svg>"]) + "\n"
