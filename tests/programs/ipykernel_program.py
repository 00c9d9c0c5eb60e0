"""A kernel, started as notebooks start it, runs a cell that uses the host and answers over its sockets."""

import os
import sys
import tempfile

folder = tempfile.TemporaryDirectory()
os.environ.update(HOME=folder.name, JUPYTER_RUNTIME_DIR=folder.name, IPYTHONDIR=folder.name)

from jupyter_client.manager import KernelManager  # noqa: E402

manager = KernelManager(connection_file=os.path.join(folder.name, "kernel.json"))
manager.kernel_spec.argv = [sys.executable, "-m", "ipykernel_launcher", "-f", "{connection_file}"]
manager.start_kernel()
client = manager.client()
client.start_channels()
try:
    client.wait_for_ready(timeout=60)
    printed = []
    reply = client.execute_interactive(
        "import ling; print(ling.display(ling.List([1, 2])))",
        timeout=60,
        output_hook=lambda message: printed.append(message["content"].get("text", "")),
    )
    assert reply["content"]["status"] == "ok", reply["content"]
    print("ipykernel", "".join(printed).strip())
finally:
    client.stop_channels()
    manager.shutdown_kernel(now=True)
