#!/usr/bin/env python3
"""Checks the manifest of the Flatpak, as flatpak-builder reads it: check-flatpak.py PROJECT

What its modules and its runtime bring must be the packages that scripts/setup.sh names for building and for the window,
each once; FFmpeg must be configured as Packaging/ffmpeg.options says; every source must have a digest.
"""
import json
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path


def read_manifest(file: Path):
    shown = subprocess.run(["flatpak-builder", "--show-manifest", file], text=True, capture_output=True, check=False)
    # What it does not know, it tells of and leaves out.
    if shown.returncode or shown.stderr.strip():
        raise SystemExit(f"{file}: {shown.stderr}")
    return json.loads(shown.stdout)


def package_problems(manifest, project: Path):
    listed = subprocess.run([project / "scripts/setup.sh", "--list", "build", "app"], text=True, capture_output=True,
                            check=True).stdout.split()
    brought = Counter(manifest["x-runtime-packages"])
    for module in manifest["modules"]:
        packages = module.get("x-packages", [])
        if not packages and module is not manifest["modules"][-1]:
            yield f"module {module['name']} stands for no package"
        brought.update(packages)
    for package in sorted(set(listed) - set(brought)):
        yield f"{package} is in scripts/setup.sh, but no module and not the runtime brings it"
    for package in sorted(set(brought) - set(listed)):
        yield f"{package} is brought, but scripts/setup.sh does not name it"
    for package, times in brought.items():
        if times > 1:
            yield f"{package} is brought {times} times"


def ffmpeg_problems(manifest, project: Path):
    wanted = [line for line in (project / "Packaging/ffmpeg.options").read_text().splitlines()
              if not line.startswith("#")]
    options = next(module["config-opts"] for module in manifest["modules"] if module["name"] == "ffmpeg")
    for option in sorted(set(wanted) ^ set(options)):
        yield f"{option} is not in both the manifest and Packaging/ffmpeg.options"
    for option in options:
        if re.search("gpl|nonfree", option):
            yield f"{option} changes the licence of FFmpeg"


def source_problems(manifest):
    for module in manifest["modules"][:-1]:
        for source in module["sources"]:
            if not re.fullmatch("[0-9a-f]{64}", source.get("sha256", "")):
                yield f"a source of {module['name']} has no SHA-256"
            if not source.get("url", "").startswith("https://"):
                yield f"a source of {module['name']} has no https address"


def name_problems(manifest, project: Path):
    metadata = project / "Packaging" / (manifest["rename-appdata-file"] + ".in")
    component = ElementTree.parse(metadata).getroot().findtext("id")
    if manifest["id"] != component:
        yield f"the manifest is that of {manifest['id']}, the metadata that of {component}"
    for name in (manifest["rename-desktop-file"], manifest["rename-icon"] + ".svg"):
        if not (project / "Packaging" / name).exists():
            yield f"there is no Packaging/{name}"


def main():
    project = Path(sys.argv[1])
    manifest = read_manifest(project / "Packaging/flatpak/org.quillmere.Quillmere.yaml")
    problems = [*package_problems(manifest, project), *ffmpeg_problems(manifest, project),
                *source_problems(manifest), *name_problems(manifest, project)]
    print("\n".join(problems) or f"{len(manifest['modules'])} modules")
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
