"""A Slurm cluster of three nodes on this machine, in a private folder: munge, slurmctld and slurmd as Debian packages
have them, all traffic on loopback, ended by their process numbers.

Usage: cluster.py COMMAND…    runs COMMAND beside a cluster that SLURM_CONF names, then stops the cluster
"""

import os
import pathlib
import secrets
import shutil
import socket
import subprocess
import sys
import tempfile
import time

NODES = ["n1", "n2", "n3"]
PROGRAMS = ["munged", "slurmctld", "slurmd", "sbatch", "squeue", "scancel", "scontrol"]
SKIPPED = 77
DAEMON_PATH = os.environ["PATH"] + ":/usr/sbin:/sbin"


def missing_programs():
    return [name for name in PROGRAMS if shutil.which(name, path=DAEMON_PATH) is None]


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for each in sockets:
        each.bind(("127.0.0.1", 0))
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


class Cluster:
    """Daemons by name; `stop` and `start` may be called for one of them."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="corvel-slurm-"))
        # munge wants every folder above its socket to be closed to others.
        self.folder.chmod(0o711)
        for name in ("munge", "state", *(f"spool-{node}" for node in NODES)):
            (self.folder / name).mkdir(mode=0o755)
        self.daemons = {}
        self.environment = {**os.environ, "PATH": DAEMON_PATH, "SLURM_CONF": str(self.folder / "slurm.conf")}
        self.write_configuration()

    def write_configuration(self):
        key = self.folder / "munge/key"
        key.write_bytes(secrets.token_bytes(1024))
        key.chmod(0o400)
        host = socket.gethostname().split(".")[0]
        controller, *ports = free_ports(1 + len(NODES))
        processors = os.cpu_count()
        lines = [
            "ClusterName=corvel",
            f"SlurmctldHost={host}(127.0.0.1)",
            f"SlurmctldPort={controller}",
            "SlurmUser=root",
            "SlurmdUser=root",
            "AuthType=auth/munge",
            f"AuthInfo=socket={self.folder}/munge/munge.sock",
            "CredType=cred/munge",
            "ProctrackType=proctrack/linuxproc",
            "TaskPlugin=task/none",
            "SlurmdParameters=config_overrides",
            "SelectType=select/cons_tres",
            "SelectTypeParameters=CR_CPU",
            "ReturnToService=2",
            "SchedulerParameters=batch_sched_delay=0,sched_interval=1,sched_min_interval=0,bf_interval=1",
            "JobAcctGatherType=jobacct_gather/none",
            "AccountingStorageType=accounting_storage/none",
            "MpiDefault=none",
            "SwitchType=switch/none",
            # Nobody but this machine can reach the daemons.
            "CommunicationParameters=NoInAddrAny,NoCtldInAddrAny",
            "SlurmdTimeout=10",
            "KillWait=5",
            f"StateSaveLocation={self.folder}/state",
            f"SlurmdSpoolDir={self.folder}/spool-%n",
            f"SlurmctldPidFile={self.folder}/slurmctld.pid",
            f"SlurmdPidFile={self.folder}/slurmd-%n.pid",
            f"SlurmctldLogFile={self.folder}/slurmctld.log",
            f"SlurmdLogFile={self.folder}/slurmd-%n.log",
            *(f"NodeName={node} NodeHostname={host} NodeAddr=127.0.0.1 Port={port} CPUs={processors} State=UNKNOWN"
              for node, port in zip(NODES, ports)),
            f"PartitionName=all Nodes={','.join(NODES)} Default=YES MaxTime=INFINITE State=UP OverSubscribe=NO",
        ]
        (self.folder / "slurm.conf").write_text("\n".join(lines) + "\n")

    def start(self, name, *more):
        commands = {
            "munged": ["munged", "--foreground", "--force", f"--key-file={self.folder}/munge/key",
                       f"--socket={self.folder}/munge/munge.sock", f"--pid-file={self.folder}/munge/munged.pid",
                       f"--log-file={self.folder}/munge/munged.log", f"--seed-file={self.folder}/munge/munged.seed"],
            "slurmctld": ["slurmctld", "-D", *more],
            **{node: ["slurmd", "-D", "-N", node] for node in NODES},
        }
        with open(self.folder / f"{name}.out", "ab") as output:
            self.daemons[name] = subprocess.Popen(commands[name], env=self.environment, stdin=subprocess.DEVNULL,
                                                  stdout=output, stderr=output)

    def stop(self, name, sign=None):
        daemon = self.daemons.pop(name)
        daemon.terminate() if sign is None else daemon.send_signal(sign)
        try:
            daemon.wait(20)
        except subprocess.TimeoutExpired:
            daemon.kill()
            daemon.wait()

    def run(self, *words):
        return subprocess.run([str(word) for word in words], env=self.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False)

    def idle_nodes(self):
        return self.run("sinfo", "-h", "-N", "-o", "%N %t").stdout.count(" idle\n")

    def __enter__(self):
        try:
            self.start("munged")
            self.wait_for(lambda: (self.folder / "munge/munge.sock").exists())
            self.start("slurmctld", "-c")
            for node in NODES:
                self.start(node)
            self.wait_for(lambda: self.idle_nodes() == len(NODES))
        except BaseException:
            self.__exit__()
            raise
        return self

    def wait_for(self, condition, seconds=60):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                logs = [f"{path.name}:\n{path.read_text(errors='replace')[-2000:]}" for path in
                        self.folder.rglob("*") if path.suffix in (".log", ".out")]
                raise AssertionError("the cluster does not come up\n" + "\n".join(logs))
            time.sleep(0.1)

    def __exit__(self, *_):
        if "slurmctld" in self.daemons:
            self.run("scancel", "--partition=all")
        for name in [*NODES, "slurmctld", "munged"]:
            if name in self.daemons:
                self.stop(name)
        shutil.rmtree(self.folder, ignore_errors=True)


def main():
    if missing_programs():
        print("missing:", *missing_programs())
        return SKIPPED
    with Cluster() as cluster:
        return subprocess.run(sys.argv[1:], env=cluster.environment, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
