"""Writes annotations_r2000.dxf anew with ezdxf, an independent writer: multilines, tolerances and leaders.

Usage: make_annotations.py OUT.dxf
"""
import sys

import ezdxf
doc = ezdxf.new('R2000')
m = doc.modelspace()
st = doc.mline_styles.new('FOUR')
for off, col in ((1.0, 1), (0.5, 2), (-0.5, 3), (-1.0, 5)):
    st.elements.append(off, col)
st.dxf.fill_color = 254
st.dxf.flags = 1 | 2 | 32 | 64 | 256
for closed, dx in ((False, 0), (True, 40)):
    m.add_mline([(dx, 0), (dx + 20, 0), (dx + 20, 10), (dx + 30, 15)], close=closed,
                dxfattribs={'style_name': 'FOUR', 'scale_factor': 2, 'justification': 1})
ds = doc.dimstyles.get('Standard')
for name, value in (('dimtxt', 2.5), ('dimgap', 0.625), ('dimasz', 2.5), ('dimclrt', 3), ('dimclrd', 1), ('dimtad', 1)):
    setattr(ds.dxf, name, value)


def tol(text, p, xdir=(1, 0, 0)):
    t = m.new_entity('TOLERANCE', {'content': text, 'insert': p, 'dimstyle': 'Standard', 'x_axis_vector': xdir})


tol(r'{\Fgdt;j}%%v{\Fgdt;n}0.5{\Fgdt;m}%%v%%vA%%vB{\Fgdt;m}%%v', (0, 30))
tol(r'{\Fgdt;j}%%v{\Fgdt;n}0.5%%vA^J{\Fgdt;j}%%v0.1%%vB%%vC^J5.0{\Fgdt;p}^JD', (40, 30))
tol(r'{\Fgdt;f}%%v{\Fgdt;b}%%v{\Fgdt;a}%%v{\Fgdt;c}%%v{\Fgdt;e}%%v{\Fgdt;g}%%v{\Fgdt;d}%%v{\Fgdt;k}%%v{\Fgdt;h}%%v{\Fgdt;t}%%v{\Fgdt;i}%%v{\Fgdt;r}%%v{\Fgdt;u}%%v{\Fgdt;s}', (0, 45))
tol(r'{\Fgdt;b}%%v0.02%%vA', (90, 20), (0, 1, 0))
l = m.add_leader([(0, 60), (15, 70), (30, 60), (45, 60)], dimstyle='Standard')
l.dxf.path_type = 1
m.add_leader([(60, 60), (70, 70), (80, 70)], dimstyle='Standard')
doc.saveas(sys.argv[1])
