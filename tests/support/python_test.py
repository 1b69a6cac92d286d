"""Lists the tests of a folder's test_*.py files, or runs one of them, for ctest.

Usage: python_test.py FOLDER [TEST]        exit status 77: the test was skipped, and the last line says why
"""
import sys
import unittest


def names(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from names(test)
        else:
            yield test.id()


def main(folder, test=None):
    sys.dont_write_bytecode = True
    sys.path.insert(0, folder)
    if test is None:
        print("\n".join(names(unittest.TestLoader().discover(folder))))
        return 0
    result = unittest.main(module=None, argv=[__file__, test], exit=False).result
    for _, reason in result.skipped:
        print(f"skipped: {reason}")
    return 1 if not result.wasSuccessful() else 77 if result.skipped else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
