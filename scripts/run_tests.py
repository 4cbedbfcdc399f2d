#!/usr/bin/env python3
"""Runs every test that CTest knows and counts single test cases: scripts/run_tests.py BUILD_FOLDER [AREA...]

An executable of GoogleTest counts with its cases, any other test as one. Output is shown for what fails only. The last line is
"N passed, N failed". An executable that runs no case has failed.
"""
import concurrent.futures
import json
import os
import subprocess
import sys
import tempfile


def listed(build, areas):
    text = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True, text=True).stdout
    tests = json.loads(text)["tests"]
    return [t for t in tests if not areas or t["name"] in areas]


def run(test):
    """(name, passed, failed, output)"""
    if "command" not in test:
        return test["name"], 0, 1, "its executable is not built"
    timeout = next((p["value"] for p in test.get("properties", []) if p["name"] == "TIMEOUT"), 900)
    with tempfile.TemporaryDirectory() as folder:
        report = os.path.join(folder, "report.json")
        environment = dict(os.environ, GTEST_OUTPUT=f"json:{report}")
        for prop in test.get("properties", []):
            if prop["name"] == "ENVIRONMENT":
                environment.update(entry.split("=", 1) for entry in prop["value"])
        try:
            done = subprocess.run(test["command"], capture_output=True, text=True, errors="replace", timeout=timeout,
                                  env=environment, stdin=subprocess.DEVNULL)
            code, output = done.returncode, done.stdout + done.stderr
        except subprocess.TimeoutExpired as stopped:
            code, output = -1, f"{(stopped.stdout or b'').decode(errors='replace')}\nstopped after {timeout} s"
        if not os.path.exists(report):
            is_gtest = any(argument.startswith("--gtest") for argument in test["command"])
            if is_gtest:
                output += f"\nthe executable ended with {code} before it reported"
            return test["name"], int(code == 0 and not is_gtest), int(code != 0 or is_gtest), output
        with open(report, encoding="utf-8") as file:
            result = json.load(file)
    failed = result["failures"]
    passed = result["tests"] - failed - result["disabled"]
    if code != 0 and failed == 0:
        failed = 1
    if passed + failed == 0:
        failed, output = 1, output + "\nno test case was run"
    return test["name"], passed, failed, output


def main():
    tests = listed(sys.argv[1], set(sys.argv[2:]))
    total_passed = total_failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for name, passed, failed, output in pool.map(run, tests):
            total_passed += passed
            total_failed += failed
            print(f"{'ok  ' if failed == 0 else 'FAIL'} {name}: {passed} passed" + (f", {failed} failed" if failed else ""))
            if failed:
                print(output)
    if not tests:
        print("no tests found")
        total_failed += 1
    print(f"{total_passed} passed, {total_failed} failed")
    return 1 if total_failed else 0


if __name__ == "__main__":
    sys.exit(main())
