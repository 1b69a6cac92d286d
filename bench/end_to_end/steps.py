"""The steps of a conversion one by one, from the program bench_pipeline of the preset bench."""

import json
import subprocess
import sys

from end_to_end import report


def measure(options):
    program = options.bin / "bench_pipeline"
    if not program.exists():
        print(f"left out: steps ({program} is not there; build the preset bench)", file=sys.stderr)
        return {}
    done = subprocess.run([program, "--benchmark_format=json", "--benchmark_min_time=0.2",
                           f"--benchmark_repetitions={options.runs}", "--benchmark_report_aggregates_only=true"],
                          capture_output=True, text=True, check=True)
    medians = {case["run_name"]: case for case in json.loads(done.stdout)["benchmarks"]
               if case["aggregate_name"] == "median"}
    copying = medians["copy_bytes"]["cpu_time"]
    rows = [[name, f"{case['cpu_time'] / 1e6:.2f} ms", f"{case['bytes_per_second'] / 1e9:.1f}",
             f"{case['cpu_time'] / copying:.1f}"] for name, case in medians.items()]
    return {"steps": report.table(["", "processor", "GB / s", "× copying"], rows)}


def measurements():
    yield "steps", measure
