"""Programs that copy or paste as none should, one kind after the other, and what velmora needs of memory for it."""
import pathlib
import sys
import time

from x11_desktop import Desktop
from x11_programs import Copier

TRACKED, CLEAN = b"https://shop.example/?id=7&utm_source=mail", b"https://shop.example/?id=7"


def written_memory(process):
    """MiB of private pages that were written to."""
    lines = pathlib.Path(f"/proc/{process.pid}/smaps_rollup").read_text().splitlines()
    return next(int(line.split()[1]) / 1024 for line in lines if line.startswith("Private_Dirty"))


def try_kinds(program, kinds, try_kind, most_memory, rest):
    """Calls `try_kind(desktop, kind, neighbour)` for each: it returns what became of that kind, and a list of complaints.

    `neighbour` is a well-behaved program whose link has been cleaned before. `most_memory`: MiB that may be there at the end
    beyond those at the start, when `rest` seconds have passed. Ends this process: with 0 when all was well."""
    wrong = 0
    with Desktop(str(pathlib.Path(program).resolve()), tray="none", compositor=False) as desktop:
        velmora = desktop.start_velmora()
        desktop.wait_for_velmora()
        desktop.settle()
        neighbour = Copier(desktop.env["DISPLAY"])
        neighbour.copy(TRACKED)
        neighbour.wait_until_lost(5)
        before = written_memory(velmora)
        for kind in kinds:
            outcome, complaints = try_kind(desktop, kind, neighbour)
            wrong += bool(complaints)
            print(f"{kind:48} {'; '.join([outcome, *complaints])}", flush=True)
            if velmora.poll() is not None:
                sys.exit(f"ended with {velmora.returncode}\n{desktop.log('velmora')}")
        time.sleep(rest)
        after, said = written_memory(velmora), desktop.log("velmora")
    print(f"{len(kinds)} kinds, {wrong} wrong; written memory {before:.1f} MiB before, {after:.1f} MiB after")
    sys.exit(f"it said:\n{said}" if said else 1 if wrong or after > before + most_memory else 0)
