# SPDX-License-Identifier: MIT
"""The lines of a plan, unchanged, as a job array of Slurm: of a cluster of one node that runs for this test alone."""
import contextlib
import os
import socket
import subprocess
import time

import pytest

from conftest import PROGRAM
from media_support import clip

CHAIN = ("-f", "Ghosting", "--encoder", "ffv1", "--encoder-option", "g=1")

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
SchedulerParameters=batch_sched_delay=0,sched_interval=1
StateSaveLocation={folder}
SlurmdSpoolDir={folder}
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


@pytest.fixture
def cluster(tmp_path):
    """The environment of the cluster's users."""
    folder = tmp_path / "cluster"
    folder.mkdir()
    host = socket.gethostname().split(".")[0]
    (folder / "slurm.conf").write_text(CONFIGURATION.format(host=host, folder=folder, ports=free_ports(2)))
    environment = {**os.environ, "SLURM_CONF": str(folder / "slurm.conf"),
                   "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}:/usr/sbin"}
    with open(folder / "log", "wb") as log, contextlib.ExitStack() as stack:
        for command in (["slurmctld", "-D", "-c", "-i"], ["slurmd", "-D", "-c"]):
            daemon = stack.enter_context(subprocess.Popen(command, env=environment, stdout=log, stderr=log))
            stack.callback(daemon.terminate)
        deadline = time.monotonic() + 30
        while b"idle" not in subprocess.run(["sinfo", "--noheader", "--format=%t"], env=environment, capture_output=True).stdout:
            assert time.monotonic() < deadline, (folder / "log").read_text()[-3000:]
            time.sleep(0.05)
        yield environment


@pytest.mark.skipif(os.geteuid() != 0, reason="the daemons run jobs as another user only for root")
def test_a_job_array_renders_the_segments(vireo, tmp_path, cluster):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", "-c:a", "flac", sound=True)
    plan = ("farm", "plan", "in.mkv", "out.mkv", *CHAIN, "--segments", 4)
    (tmp_path / "segments.sh").write_bytes(vireo(*plan, "--part", "segments").stdout)
    subprocess.run(["sbatch", "--wait", "--array=1-4", "--wrap", 'sed -n "${SLURM_ARRAY_TASK_ID}p" segments.sh | sh'],
                   cwd=tmp_path, env=cluster, check=True, timeout=100)
    [folder] = tmp_path.glob("*.farm-*")
    assert len(list(folder.glob("frames-*"))) == 4, [log.read_text() for log in tmp_path.glob("slurm-*")]
    subprocess.run(["sh", "-e"], input=vireo(*plan, "--part", "join").stdout, cwd=tmp_path, env=cluster, check=True, timeout=60)
    vireo("render", "in.mkv", "whole.mkv", *CHAIN)
    assert (tmp_path / "out.mkv").read_bytes() == (tmp_path / "whole.mkv").read_bytes()
