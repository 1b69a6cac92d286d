"""Sums test runs up: which tests were skipped and why, and in the last line how many passed, failed and were skipped.

Usage: test_counts.py PASSED FAILED SKIPPED [REPORT...]       what counts besides; REPORTs are ctest's, in JUnit's format
"""
import re
import sys
import xml.etree.ElementTree as xml

# As the Python tests say it, and as GoogleTest does.
REASON = re.compile(r"^(?:skipped: |\S+: Skipped\n)(.*)$", re.M)


def main(passed, failed, skipped, *reports):
    counts = [int(passed), int(failed), int(skipped)]
    for report in reports:
        suite = xml.parse(report).getroot()
        tests, bad, left_out, disabled = (int(suite.get(name)) for name in ("tests", "failures", "skipped", "disabled"))
        for i, more in enumerate((tests - bad - left_out - disabled, bad, left_out + disabled)):
            counts[i] += more
        for test in suite.iter("testcase"):
            if test.get("status") in ("notrun", "disabled"):
                reason = REASON.search(test.findtext("system-out") or "")
                print(f"skipped: {test.get('name')}: {reason[1] if reason else 'it does not say why'}")
    print("{} passed, {} failed, {} skipped".format(*counts))


if __name__ == "__main__":
    main(*sys.argv[1:])
