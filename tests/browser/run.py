#!/usr/bin/env python3
"""Looks at the page of `kelda report` in a browser that shows no window.

    run.py KELDA_PROGRAM SOURCE_DIR [TEST...]

Needs python3-selenium, chromium and chromium-driver; ends with 77 where one of them is missing. Prints
how long large devices took; the limits are generous, as machines may be busy.
"""

import pathlib
import shutil
import sys
import unittest

SKIPPED = 77


def missing():
    if not shutil.which("chromium") or not shutil.which("chromedriver"):
        return "chromium and chromium-driver"
    try:
        import selenium  # noqa: F401
    except ImportError:
        return "python3-selenium"
    return None


def main(arguments):
    if len(arguments) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    if missing():
        print(f"skipped: {missing()} is not installed")
        return SKIPPED
    sys.dont_write_bytecode = True
    here = pathlib.Path(__file__).resolve().parent
    sys.path.insert(0, str(here))
    import setting

    setting.begin(program=arguments[0], source=arguments[1])
    try:
        loader = unittest.TestLoader()
        loader.testNamePatterns = [f"*{name}*" for name in arguments[2:]] or None
        tests = loader.discover(str(here), pattern="*_test.py")
        result = unittest.TextTestRunner(verbosity=2).run(tests)
        return 0 if result.wasSuccessful() and result.testsRun > 0 else 1
    finally:
        setting.end()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
