"""Runs the programs for the tests beside it."""
import subprocess
import sys


def run(*command):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} gave {done.returncode}: {done.stderr}")
    return done.stdout
