"""Ctrl-C during a run ends it with the results so far and exit code 130.

usage: check_interrupt.py PROGRAM...    # the host, with what it is started through
"""

import json
import signal
import subprocess
import sys


def main():
    run = subprocess.Popen(sys.argv[1:] + ["stream", "--depth", "640x480@30", "--seconds", "50", "--json"],
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    for line in run.stderr:
        if " out," in line and " 0 out," not in line:
            break
    run.send_signal(signal.SIGINT)
    output, errors = run.communicate(timeout=40)
    assert run.returncode == 130, f"exit code {run.returncode}: {errors}"
    report = json.loads(output)
    assert report["interrupted"] and not report["problems"], output
    depth = report["phases"][0]["outputs"][0]
    assert 0 < depth["in"] == depth["out"], output
    return 0


if __name__ == "__main__":
    sys.exit(main())
