# SPDX-License-Identifier: MIT
"""The lines of a plan, unchanged, as a job array of Slurm: of a cluster of one node that runs for this test alone."""
import contextlib
import os
import signal
import socket
import subprocess
import time

import pytest

from conftest import PROGRAM
from media_support import clip

CHAIN = ("-f", "Ghosting", "-f", "Camera Blur:percent blur=60", "--encoder", "ffv1", "--encoder-option", "g=1")

CONFIGURATION = """
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={ports[0]}
SlurmdPort={ports[1]}
SlurmUser=root
AuthType=auth/none
CredType=cred/none
ProctrackType=proctrack/pgid
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
JobAcctGatherType=jobacct_gather/none
ReturnToService=2
JobRequeue=1
SchedulerParameters=batch_sched_delay=0,sched_interval=1
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SelectType=select/cons_tres
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes={host} Default=YES OverSubscribe=FORCE:2 MaxTime=10 State=UP
"""


def free_ports(count):
    with contextlib.ExitStack() as stack:
        sockets = [stack.enter_context(socket.socket()) for _ in range(count)]
        for each in sockets:
            each.bind(("127.0.0.1", 0))
        return [each.getsockname()[1] for each in sockets]


def wait_for(condition, seconds, what):
    deadline = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < deadline, what
        time.sleep(0.01)


class Cluster:
    def __init__(self, folder):
        self.folder = folder
        host = socket.gethostname().split(".")[0]
        for name in ("state", "spool"):
            (folder / name).mkdir(parents=True)
        (folder / "slurm.conf").write_text(CONFIGURATION.format(host=host, folder=folder, ports=free_ports(2)))
        self.environment = {**os.environ, "SLURM_CONF": str(folder / "slurm.conf"),
                            "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}:/usr/sbin"}
        self.daemons = []

    def __enter__(self):
        for command in (["slurmctld", "-D", "-c", "-i"], ["slurmd", "-D", "-c"]):
            with open(self.folder / f"{command[0]}.log", "wb") as log:
                self.daemons.append(subprocess.Popen(command, env=self.environment, stdout=log, stderr=log))
        wait_for(lambda: "idle" in self("sinfo", "--noheader", "--format=%t", check=False), 30, self.logs())
        return self

    def __exit__(self, *_):
        for daemon in reversed(self.daemons):
            daemon.terminate()
        for daemon in reversed(self.daemons):
            try:
                daemon.wait(20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()

    def __call__(self, *command, check=True, cwd=None):
        completed = subprocess.run(command, env=self.environment, cwd=cwd, capture_output=True, text=True, timeout=60)
        assert completed.returncode == 0 or not check, completed.stderr + self.logs()
        return completed.stdout

    def logs(self):
        return "".join(log.read_text()[-3000:] for log in self.folder.glob("*.log"))


@pytest.mark.skipif(os.geteuid() != 0, reason="the daemons run jobs as another user only for root")
def test_a_job_array_renders_the_segments(vireo, tmp_path):
    work = tmp_path / "work"
    work.mkdir()
    vireo.folder = work
    # So large that a worker can be met at work.
    clip(work, "in.mkv", "-c:v", "ffv1", "-c:a", "flac", seconds=6, sound=True, source="testsrc2=s=1280x720:r=25:d={seconds}")
    plan = ("farm", "plan", "in.mkv", "out.mkv", *CHAIN, "--jobs", 1, "--segments", 4)
    segments = vireo(*plan, "--part", "segments").stdout.decode()
    (work / "segments.sh").write_text(segments)
    wrapped = 'sed -n "${SLURM_ARRAY_TASK_ID}p" segments.sh | sh'
    array = ("sbatch", "--parsable", "--output", "log-%a", "--array=1-4", "--wrap", wrapped)

    with Cluster(tmp_path / "cluster") as cluster:
        job = cluster(*array, cwd=work).strip()

        def started():
            return [path for path in work.glob("*.farm-*/.vireo-*") if path.stat().st_size]

        wait_for(started, 30, cluster.logs())
        # The first worker's process ends as if its machine had failed.
        os.kill(int(started()[0].name.split("-")[1]), signal.SIGKILL)
        wait_for(lambda: not cluster("squeue", "--noheader", "--jobs", job, check=False).strip(), 60, cluster.logs())
        [folder] = work.glob("*.farm-*")
        assert len(list(folder.glob("frames-*"))) == 3, [log.read_text() for log in work.glob("log-*")]

        whole = {path: path.stat().st_mtime_ns for path in folder.glob("frames-*")}
        cluster(*array, "--wait", cwd=work)
        assert all(path.stat().st_mtime_ns == then for path, then in whole.items())

    join = vireo(*plan, "--part", "join").stdout
    subprocess.run(["sh", "-e"], input=join, cwd=work, check=True, capture_output=True, timeout=60,
                   env={**os.environ, "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}"})
    vireo("render", "in.mkv", "whole.mkv", *CHAIN)
    assert (work / "out.mkv").read_bytes() == (work / "whole.mkv").read_bytes()
