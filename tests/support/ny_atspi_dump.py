#!/usr/bin/python3
"""Prints the accessibility tree of the application with the given process id, one object per
line: role, name, x, y, width, height and states, separated by tabs (tabs, CR and LF inside a
name are written as \\t, \\r and \\n). Exit code 3 when no such application is registered."""
import sys

import pyatspi


def escape(szText):
    return (szText or '').replace('\\', '\\\\').replace('\t', '\\t').replace('\r', '\\r') \
        .replace('\n', '\\n')


def describe(acc):
    try:
        ext = acc.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        aGeometry = [ext.x, ext.y, ext.width, ext.height]
    except NotImplementedError:
        aGeometry = [-1, -1, -1, -1]
    aStates = [pyatspi.stateToString(s) for s in acc.getState().getStates()]
    return '\t'.join([acc.getRoleName(), escape(acc.name)] + [str(v) for v in aGeometry]
                     + [','.join(aStates)])


def walk(acc, nDepth=0):
    if acc is None or nDepth > 40:
        return
    print(describe(acc))
    for i in range(acc.childCount):
        walk(acc.getChildAtIndex(i), nDepth + 1)


def main():
    pid = int(sys.argv[1])
    desktop = pyatspi.Registry.getDesktop(0)
    for i in range(desktop.childCount):
        app = desktop.getChildAtIndex(i)
        try:
            if app is not None and app.get_process_id() == pid:
                walk(app)
                return 0
        except Exception:  # an application that went away while we looked
            continue
    return 3


if __name__ == '__main__':
    sys.exit(main())
