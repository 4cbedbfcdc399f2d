#!/usr/bin/python3
"""ezdxf_times.py FILE: seconds of reading the file and of writing it into memory, with ezdxf."""
import io
import sys
import time

import ezdxf

start = time.perf_counter()
drawing = ezdxf.readfile(sys.argv[1])
read = time.perf_counter()
drawing.write(io.StringIO())
print(f"{read - start:.4f} {time.perf_counter() - read:.4f}")
