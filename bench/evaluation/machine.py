"""What was measured on, and whether it had anything else to do."""

import os
import pathlib
import platform
import time

BUSY = 0.10  # share of the processors' time that is too much


def describe():
    cpu = {}
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        name, _, value = line.partition(":")
        cpu.setdefault(name.strip(), value.strip())
    memory_kib = int(pathlib.Path("/proc/meminfo").read_text().split()[1])
    return {
        "cpu": cpu.get("model name", platform.machine()),
        "cores": os.cpu_count(),
        "virtual": "hypervisor" in cpu.get("flags", "").split(),
        "memory_gib": round(memory_kib / 2**20, 1),
        "kernel": platform.release().split("-")[0],
        "system": platform.freedesktop_os_release().get("PRETTY_NAME", "Linux"),
        "TZ": os.environ.get("TZ", "not set"),
    }


def activity(seconds=1.0):
    """While nothing of ours runs: the load and the busy share of the processors."""
    before = processor_times()
    time.sleep(seconds)
    return {"load": os.getloadavg()[0], "busy": round(Share(before).busy, 3)}


def is_busy(active):
    return active["busy"] > BUSY


class Share:
    """Of the processors' time since `before`."""

    def __init__(self, before):
        spent = [now - then for now, then in zip(processor_times(), before)]
        total = max(sum(spent), 1)
        idle, waiting, stolen = spent[3], spent[4], spent[7]
        self.busy = 1 - (idle + waiting) / total
        self.stolen = stolen / total


def processor_times():
    """In ticks: user, nice, system, idle, iowait, irq, softirq, steal."""
    line = pathlib.Path("/proc/stat").read_text().splitlines()[0]
    return [int(ticks) for ticks in line.split()[1:9]]
