"""The plug-in's file signed with the publisher's own certificate.

  VELL_CERTIFICATE                a PFX file with the certificate and its key
  VELL_CERTIFICATE_PASSWORD_FILE  a file that holds its password and nothing else
  VELL_TIMESTAMP_URL              an RFC 3161 time-stamp server; without it the signature is good
                                  only until the certificate expires
"""
import subprocess
import tempfile
from pathlib import Path

from components import PackageError

CERTIFICATE, PASSWORD = "VELL_CERTIFICATE", "VELL_CERTIFICATE_PASSWORD_FILE"
TIMESTAMP = "VELL_TIMESTAMP_URL"


def wanted(environment):
    given = [name for name in (CERTIFICATE, PASSWORD) if environment.get(name)]
    if len(given) == 1:
        raise PackageError(f"{CERTIFICATE} and {PASSWORD} belong together; only {given[0]} is set")
    for name in given:
        if not Path(environment[name]).is_file():
            raise PackageError(f"{name} names no file: {environment[name]}")
    return bool(given)


def signed(plugin, environment):
    """The bytes of the file with a signature."""
    with tempfile.TemporaryDirectory() as folder:
        source, target = Path(folder, "unsigned"), Path(folder, "signed")
        source.write_bytes(plugin)
        command = ["osslsigncode", "sign", "-pkcs12", environment[CERTIFICATE],
                   "-readpass", environment[PASSWORD], "-h", "sha256", "-n", "Vell File"]
        if environment.get(TIMESTAMP):
            command += ["-ts", environment[TIMESTAMP]]
        done = subprocess.run([*command, "-in", str(source), "-out", str(target)],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        if done.returncode or not target.is_file():
            raise PackageError("The plug-in could not be signed:\n" +
                               (done.stdout + done.stderr).strip())
        return target.read_bytes()
