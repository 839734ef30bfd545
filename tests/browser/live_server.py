"""A PostgreSQL server of the test's own, which can be stopped and started. It refuses to be root's."""

import glob
import os
import shutil
import subprocess
import tempfile

from live_site import until

NOBODY = 65534


class Server:
    def __init__(self):
        self.programs = max(glob.glob("/usr/lib/postgresql/*/bin"))
        self.folder = tempfile.mkdtemp(prefix="pagerfwd-browser-")
        self.as_whom = {"user": NOBODY, "group": NOBODY} if os.geteuid() == 0 else {}
        if self.as_whom:
            os.chown(self.folder, NOBODY, NOBODY)
        self.run("initdb", f"--pgdata={self.folder}/data", "--username=pager", "--auth=trust",
                 "--encoding=UTF8", "--locale=C", "--no-sync")
        self.process = None
        self.start()
        self.database = f"postgresql://pager@/postgres?host={self.folder}"

    def run(self, program, *arguments, check=True):
        return subprocess.run([f"{self.programs}/{program}", *arguments], cwd=self.folder,
                              check=check, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              **self.as_whom).returncode

    def start(self):
        self.process = subprocess.Popen(
            [f"{self.programs}/postgres", "-D", f"{self.folder}/data", "-k", self.folder,
             "-c", "listen_addresses=", "-c", "fsync=off"],
            cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **self.as_whom)
        until(lambda: self.run("pg_isready", "-h", self.folder, check=False) == 0)

    def stop(self):
        self.process.send_signal(3)  # at once
        self.process.wait()

    def remove(self):
        self.stop()
        shutil.rmtree(self.folder)
