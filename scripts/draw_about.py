#!/usr/bin/env python3
"""Draws the About box's pictures, one for each edition (needs python3-cairo): scripts/draw_about.py FOLDER

A hexagon nut seen from above in front of a compression spring; each edition has its own hue.
"""
import colorsys
import math
import os
import sys

import cairo

WIDTH, HEIGHT = 480, 160
# Resource number of the picture and hue of its edition; the first two are the plain edition and the product itself.
PICTURES = [(5529, 0.08), (5530, 0.58), (5531, 0.36), (5532, 0.78), (5533, 0.97), (5534, 0.14)]


def colour(hue, saturation, value):
    return colorsys.hsv_to_rgb(hue, saturation, value)


def spring(c, x, y, length, radius, coils):
    pitch = length / coils
    for i in range(coils):
        c.move_to(x + i * pitch, y + radius)
        c.line_to(x + (i + 0.5) * pitch, y - radius)
    c.stroke()
    for i in range(coils):
        c.move_to(x + (i + 0.5) * pitch, y - radius)
        c.line_to(x + (i + 1) * pitch, y + radius)
    c.stroke()


def nut(c, x, y, size):
    for i in range(6):
        angle = math.radians(60 * i + 30)
        (c.move_to if i == 0 else c.line_to)(x + size * math.cos(angle), y + size * math.sin(angle))
    c.close_path()
    c.new_sub_path()
    c.arc_negative(x, y, size * 0.48, 2 * math.pi, 0)


def draw(path, hue):
    surface = cairo.ImageSurface(cairo.FORMAT_RGB24, WIDTH, HEIGHT)
    c = cairo.Context(surface)
    sky = cairo.LinearGradient(0, 0, WIDTH, HEIGHT)
    sky.add_color_stop_rgb(0, *colour(hue, 0.75, 0.30))
    sky.add_color_stop_rgb(1, *colour(hue, 0.65, 0.62))
    c.set_source(sky)
    c.paint()
    c.set_source_rgba(1, 1, 1, 0.10)
    c.set_line_width(1)
    for x in range(0, WIDTH, 16):
        c.move_to(x + 0.5, 0)
        c.line_to(x + 0.5, HEIGHT)
    for y in range(0, HEIGHT, 16):
        c.move_to(0, y + 0.5)
        c.line_to(WIDTH, y + 0.5)
    c.stroke()
    c.set_source_rgba(1, 1, 1, 0.55)
    c.set_line_cap(cairo.LINE_CAP_ROUND)
    c.set_line_width(7)
    spring(c, 24, 80, 120, 34, 6)
    c.set_source_rgb(*colour(hue, 0.25, 1.0))
    nut(c, 84, 80, 46)
    c.fill()
    c.set_source_rgb(1, 1, 1)
    c.select_font_face("sans", cairo.FONT_SLANT_NORMAL, cairo.FONT_WEIGHT_BOLD)
    c.set_font_size(38)
    c.move_to(168, 82)
    c.show_text("Korvane")
    c.set_font_size(20)
    c.set_source_rgba(1, 1, 1, 0.85)
    c.move_to(170, 112)
    c.show_text("Mechanical")
    surface.write_to_png(path)


for number, hue in PICTURES:
    draw(os.path.join(sys.argv[1], f"{number}.png"), hue)
