"""The host has the module record a run, leaves the recording where it was told and nothing elsewhere.

usage: check_record.py SCRIPTS_FOLDER PREFIX_FOLDER HOST
"""

import json
import os
import subprocess
import sys
import tempfile


def main():
    scripts, prefix_folder, host = sys.argv[1:]
    prefix = subprocess.run([f"{scripts}/recording-prefix", prefix_folder], check=True, capture_output=True,
                            text=True).stdout.strip()

    def run(*arguments):
        return subprocess.run([f"{scripts}/run-in-wine", host, *arguments], env={**os.environ, "TARN_WINEPREFIX": prefix},
                              check=True, capture_output=True, text=True).stdout

    with tempfile.TemporaryDirectory() as folder:
        played = json.loads(run("stream", "--depth", "640x480@30", "--count", "5", "--pace", "fast", "--quiet", "--json",
                                "--record", "Z:" + folder.replace("/", "\\"), "--record-frames"))
        assert os.listdir(folder) == ["events.bin"], os.listdir(folder)
        session, = json.loads(run("events", "--json", "Z:" + f"{folder}/events.bin".replace("/", "\\")))
    assert session["closed"] and session["holdsPictures"] and not session["damages"], session
    output, = session["outputs"]
    assert output["in"] == output["out"] == played["phases"][0]["outputs"][0]["out"] == 5, output
    assert not os.path.exists(f"{prefix}/drive_c/OrrinLogs")
    return 0


if __name__ == "__main__":
    sys.exit(main())
