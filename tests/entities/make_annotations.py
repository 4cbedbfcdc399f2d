"""Writes annotations_r2000.dxf and multileaders_r2010.dxf anew with ezdxf, an independent writer.

Usage: make_annotations.py FOLDER
"""
import os
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
doc.saveas(os.path.join(sys.argv[1], 'annotations_r2000.dxf'))

from ezdxf.math import Vec2
from ezdxf.render import mleader

doc = ezdxf.new('R2010', setup=True)
m = doc.modelspace()
block = doc.blocks.new('TAG')
block.add_circle((0, 0), 5)
block.add_attdef('NO', (-2, -1.5), 'x', dxfattribs={'height': 3})


def text(content, at, leaders, style='Standard', **properties):
    made = m.add_multileader_mtext(style)
    made.set_content(content, char_height=2.5, alignment=properties.get('alignment', mleader.TextAlignment.left))
    made.set_connection_properties(landing_gap=1, dogleg_length=4)
    made.set_arrow_properties(size=3)
    made.set_leader_properties(color=1, linetype='BYLAYER',
                               leader_type=properties.get('kind', mleader.LeaderType.straight_lines))
    if 'types' in properties:
        made.set_connection_types(**properties['types'])
    for side, points in leaders:
        made.add_leader_line(side, [Vec2(p) for p in points])
    made.build(insert=Vec2(at))
    return made.multileader


left, right = mleader.ConnectionSide.left, mleader.ConnectionSide.right
text('PLAIN', (40, 0), [(left, [(0, -10)]), (left, [(0, 10), (20, 8)]), (right, [(90, -10)])])
text('SMOOTH', (40, 40), [(left, [(0, 30), (10, 45)])], kind=mleader.LeaderType.splines)
framed = text('FRAME', (40, 70), [(left, [(0, 60)])])
framed.dxf.has_text_frame = 1
text('UNDER', (40, 100), [(left, [(0, 90)])],
     types={'left': mleader.HorizontalConnection.bottom_of_bottom_line_underline})
made = m.add_multileader_block('Standard')
made.set_content('TAG', scale=1)
made.set_attribute('NO', '42')
made.set_connection_properties(landing_gap=0, dogleg_length=4)
made.set_arrow_properties(name='DOT', size=3)
made.add_leader_line(left, [Vec2(0, 120)])
made.build(insert=Vec2(40, 130))
doc.saveas(os.path.join(sys.argv[1], 'multileaders_r2010.dxf'))
