"""How long the Python module takes to read all spectra of a recording into an array. bench/run calls it: prints JSON.
Usage: spectra.py FILE [every]"""

import json
import resource
import sys
import time

import recording2

before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
begin = time.perf_counter()
spectra = recording2.open(sys.argv[1]).spectra("RFSPECTRUM", every=int(sys.argv[2]) if len(sys.argv) > 2 else 1)
seconds = time.perf_counter() - begin
more = (resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before) * 1024
print(json.dumps({"seconds": seconds, "spectra": len(spectra), "bytes": spectra.levels.nbytes, "memory": more}))
