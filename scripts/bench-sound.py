#!/usr/bin/env python3
"""Measures how good new sounds are, and writes what it finds as a page with players and as a Markdown table.

usage: bench-sound.py BUILD OUTPUT CORPUS... [--qualities quick,standard] [--starts fresh,head-start]
                      [--presets A,B:ID=VALUE] [--details 0,1] [--count N] [--seed N] [--head-start DIR]
                      [--no-baselines]

Every fourth sample of a corpus is held out: no model learns it, and no number here was tuned on it. Each model makes a
set of files for each preset (with parameters changed, if it is followed by them) and amount of detail, with one seed.
A set is compared with the samples held out (the discrepancy) and with those learned (coverage, nearest distances,
waveform correlation). Baselines: what else could be done with the learned samples. sound_measures.py defines every
number. Models are kept in OUTPUT and not learned twice.
"""
import argparse
import base64
import dataclasses
import html
import io
import json
import multiprocessing
import shutil
import subprocess
import time
import wave
from pathlib import Path

import numpy as np
import scipy.signal

import sound_measures as measures

PLAYERS = 4  # of each set, on the page
SECONDS_PLAYED = 3.0
HELD, LEARNED = "the samples held out", "the learned samples"


@dataclasses.dataclass
class Corpus:
    """A folder of samples, divided."""
    name: str
    folder: Path  # where all of this corpus's files are
    learned: Path
    held: Path


@dataclasses.dataclass
class Model:
    start: str
    quality: str
    models: Path  # folder of stored models
    stored: Path  # the model's own folder
    steps: int
    seconds: float  # of learning; 0 if it was stored already
    error_learned: float
    error_unseen: float


@dataclasses.dataclass
class Sounds:
    """A set of files with all that is measured of each."""
    name: str
    files: list
    seconds: float  # it took to make them
    descriptors: np.ndarray
    frame_rate: np.ndarray
    beating: np.ndarray  # nan where a sound is too short for it
    roughness: np.ndarray
    images: np.ndarray
    waves: np.ndarray


class Product:
    """The programs."""

    def __init__(self, build, head_start):
        self.cli = build / "Sources/QuillmereCLI/quillmere-cli"
        self.soundcheck = build / "Tools/Soundcheck/quillmere-soundcheck"
        self.head_start = head_start

    def command(self, *arguments):
        lines = subprocess.run([self.cli, *map(str, arguments), "--json"], check=True, capture_output=True,
                               text=True).stdout.splitlines()
        return json.loads(lines[-1])

    def check(self, *arguments):
        result = subprocess.run([self.soundcheck, *map(str, arguments)], check=True, capture_output=True, text=True)
        return json.loads(result.stdout or "{}")

    def train(self, corpus, start, quality):
        models = corpus.folder / f"models-{start}-{quality}"
        arguments = ["train", corpus.learned, "--models", models, "--quality", quality, "--start", start]
        if start == "head-start":
            arguments += ["--head-start", self.head_start]
        result = self.command(*arguments)
        note = models / "seconds.json"
        if result["trained"]:
            note.write_text(json.dumps(sum(result["seconds"].values())))
        stored = Path(result["modelFolder"])
        unseen = self.check("errors", stored, corpus.held)["errors"]
        return Model(start, quality, models, stored, result["steps"],
                     json.loads(note.read_text()) if note.exists() else 0,
                     result["finalReconstructionError"], float(np.mean(unseen)))

    def generate(self, corpus, model, preset, detail, options):
        output = emptied(corpus.folder / "sets" / f"{model.start}-{model.quality}-{preset}-{detail}")
        name, *changes = preset.split(":")
        began = time.monotonic()
        self.command("generate", corpus.learned, "--models", model.models, "--output", output,
                     "--count", options.count, "--preset", name, *(f"--set={change}" for change in changes),
                     "--detail", detail, "--seed", options.seed)
        return output, time.monotonic() - began


def emptied(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def divided(source, output):
    """Copies, for links are not scanned; with their times, which are part of a corpus's fingerprint."""
    folder = output / source.name
    corpus = Corpus(source.name, folder, folder / "learned", folder / "held")
    files = sorted(file for file in source.rglob("*") if file.is_file() and not file.name.startswith("."))
    for i, file in enumerate(files):
        target = (corpus.held if i % 4 == 3 else corpus.learned) / f"{i:04d}_{file.name}"
        if not target.exists():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(file, target)
    return corpus


# ---- Sets of sounds

def measured_file(path):
    samples = measures.read(path)
    sound = measures.aligned(samples)
    return (measures.descriptors(samples), measures.frame_rate(sound), measures.beating(sound),
            measures.roughness(sound), measures.band_image(sound), measures.wave_spectrum(sound))


def measured(name, folder, seconds, pool):
    files = sorted(folder.glob("*.wav"))
    each = pool.map(measured_file, files, chunksize=4)
    return Sounds(name, files, seconds, *(np.array(column) for column in zip(*each)))


class Reference:
    """The samples that sets are compared with."""

    def __init__(self, learned, held):
        self.learned, self.held = learned, held
        both = np.vstack([learned.descriptors, held.descriptors])
        self.mean, self.deviation = both.mean(axis=0), both.std(axis=0) + 1e-9
        self.width = measures.median_width(self.standardised(both))
        self.within = measures.distances(learned.images, learned.images)

    def standardised(self, descriptors):
        """No single descriptor of a strange sound may decide."""
        return np.clip((descriptors - self.mean) / self.deviation, -4, 4)

    def row(self, sounds):
        # Of a set with itself the unbiased estimate is below 0.
        values, deviation = (None, None) if sounds is self.held else measures.discrepancy_and_deviation(
            self.standardised(sounds.descriptors), self.standardised(self.held.descriptors), self.width)
        lasting = sounds.beating[~np.isnan(sounds.beating)]
        rise, length = np.exp(sounds.descriptors[:, 1]), np.exp(sounds.descriptors[:, 2])
        result = {"set": sounds.name, "files": len(sounds.files), "discrepancy": values, "deviation": deviation,
                  "half height": measures.median_interval(rise), "length": measures.median_interval(length),
                  "fine": measures.median_interval(sounds.descriptors[:, 8]),
                  "ripple": measures.median_interval(sounds.descriptors[:, 9]),
                  "frame rate": measures.median_interval(sounds.frame_rate),
                  "beating": measures.median_interval(lasting) if len(lasting) else None,
                  "roughness": measures.median_interval(sounds.roughness),
                  "partials": measures.median_interval(sounds.descriptors[:, 10]),
                  "seconds": sounds.seconds / len(sounds.files) * 100}
        own = sounds is self.learned
        apart = self.within + np.diag(np.full(len(self.within), np.inf)) if own else measures.distances(
            sounds.images, self.learned.images)
        nearest = apart.min(axis=1)
        others = lambda i: np.delete(self.learned.waves, i, 0) if own else self.learned.waves
        alike = [measures.correlations(spectrum, others(i)).max() for i, spectrum in enumerate(sounds.waves)]
        result["nearest"] = [float(np.percentile(nearest, p)) for p in (10, 50)]
        result["correlation"] = [float(np.percentile(alike, p)) for p in (50, 90)]
        result["coverage"] = None if own else measures.coverage(apart, self.within)
        within = self.within if own else measures.distances(sounds.images, sounds.images)
        result["diversity"] = measures.mean_apart(within) / measures.mean_apart(self.within)
        return result


# ---- Baselines: what else could be made of the learned samples

def resampled(folder, output, generator):
    """The samples themselves, up to three semitones higher or lower."""
    for file in sorted(folder.glob("*.wav")):
        samples = measures.read(file)
        ratio = 2 ** (generator.uniform(-3, 3) / 12)
        up = max(1, round(len(samples) / ratio))
        (output / file.name).write_bytes(wav_bytes(scipy.signal.resample(samples, up)))


def image_baselines(images, count, generator):
    """Averages of neighbours, and draws from a normal distribution over the 64 principal components."""
    flat = images.reshape(len(images), -1)
    apart = np.array([((flat - image) ** 2).mean(axis=1) for image in flat])
    np.fill_diagonal(apart, np.inf)
    chosen = generator.integers(0, len(flat), count)
    averages = 0.5 * (flat[chosen] + flat[apart.argmin(axis=1)[chosen]])
    mean = flat.mean(axis=0)
    _, scales, components = np.linalg.svd(flat - mean, full_matrices=False)
    kept = min(64, len(flat) - 1)
    draws = generator.standard_normal((count, kept)) * scales[:kept] / np.sqrt(len(flat) - 1)
    return {"averages of neighbours": averages, "PCA-64 noise": np.clip(mean + draws @ components[:kept], -1, 1.2)}


def baselines(product, corpus, stored, options, pool):
    generator = np.random.default_rng(options.seed)
    folder = emptied(corpus.folder / "sets" / "resampled")
    resampled(corpus.folder / "sets" / LEARNED, folder, generator)
    result = [measured("resampled by ±3 semitones", folder, 0, pool)]
    file = corpus.folder / "images.f32"
    shape = product.check("images", stored, corpus.learned, file)
    images = np.fromfile(file, np.float32).reshape(-1, shape["bands"] * shape["frames"])
    for name, values in image_baselines(images, options.count, generator).items():
        values.astype(np.float32).tofile(file)
        folder = emptied(corpus.folder / "sets" / name)
        product.check("render", stored, file, folder)
        result.append(measured(name, folder, 0, pool))
    file.unlink()
    return result


# ---- What is written

def wav_bytes(samples):
    data = np.round(np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes()
    content = io.BytesIO()
    with wave.open(content, "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(measures.RATE)
        file.writeframes(data)
    return content.getvalue()


def player(path):
    data = base64.b64encode(wav_bytes(measures.read(path)[:int(SECONDS_PLAYED * measures.RATE)])).decode()
    return f'<audio controls preload="none" src="data:audio/wav;base64,{data}"></audio>'


def pair(values, form="{:.2f}"):
    return " / ".join(form.format(value) for value in values)


# Title, explanation, and how a row shows it.
COLUMNS = [
    ("Set", "", lambda row: row["set"]),
    ("Files", "", lambda row: str(row["files"])),
    ("MMD²", "distance to the samples held out; 0: cannot be told apart; ± deviation over subsamples",
     lambda row: "–" if row["discrepancy"] is None else f"{row['discrepancy']:.3f} ± {row['deviation']:.3f}"),
    ("Coverage", "share of the learned samples with a new sound in their neighbourhood",
     lambda row: "–" if row["coverage"] is None else f"{row['coverage']:.2f}"),
    ("Nearest", "dB to the nearest learned sample: 10th percentile / median", lambda row: pair(row["nearest"], "{:.1f}")),
    ("Diversity", "mean distance within the set, relative to the learned samples", lambda row: f"{row['diversity']:.2f}"),
    ("Half height", "ms until half the maximum, median", lambda row: f"{row['half height'][0]:.1f}"),
    ("Length", "s, median", lambda row: f"{row['length'][0]:.2f}"),
    ("Fine", "dB between neighbouring bins, median; Gaussian noise 5.6", lambda row: f"{row['fine'][0]:.1f}"),
    ("Ripple", "dB between neighbouring frames, median", lambda row: f"{row['ripple'][0]:.1f}"),
    ("Frame rate", "dB that its modulation stands out of the envelope's spectrum, median",
     lambda row: f"{row['frame rate'][0]:.0f}"),
    ("Partials", "dB above their floor, median", lambda row: f"{row['partials'][0]:.1f}"),
    ("Beats", "dB that the levels of bands go up and down where a sound lasts, median",
     lambda row: "–" if row["beating"] is None else f"{row['beating'][0]:.2f}"),
    ("Roughness", "dissonance of the partials, median", lambda row: f"{row['roughness'][0]:.2f}"),
    ("Correlation", "largest with a learned waveform: median / 90th percentile", lambda row: pair(row["correlation"])),
    ("s / 100", "seconds for a hundred files", lambda row: f"{row['seconds']:.1f}" if row["seconds"] else "–"),
]
MODEL_COLUMNS = [
    ("Start", lambda model: model.start),
    ("Quality", lambda model: model.quality),
    ("Steps", lambda model: str(model.steps)),
    ("Seconds", lambda model: f"{model.seconds:.0f}" if model.seconds else "–"),
    ("Error on learned samples", lambda model: f"{model.error_learned:.4f}"),
    ("Error on samples held out", lambda model: f"{model.error_unseen:.4f}"),
]


def table_of(titles, rows):
    lines = ["| " + " | ".join(titles) + " |", "|" + "---|" * len(titles)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def markdown(results):
    parts = []
    for corpus, models, rows in results:
        parts.append(f"### {corpus.name}\n")
        parts.append(table_of([title for title, _ in MODEL_COLUMNS],
                              [[show(model) for _, show in MODEL_COLUMNS] for model in models]))
        parts.append(table_of([title for title, _, _ in COLUMNS],
                              [[show(row) for _, _, show in COLUMNS] for row in (row for row, _ in rows)]))
    return "\n".join(parts)


STYLE = """body { font: 14px sans-serif; margin: 2em; color-scheme: light dark; }
table { border-collapse: collapse; } td, th { padding: 2px 8px; text-align: right; border-bottom: 1px solid #8884; }
td:first-child, th:first-child { text-align: left; } audio { height: 26px; width: 150px; }
tr.players td { border: 0; padding-bottom: 10px; text-align: left; }"""


def page(results):
    parts = [f"<!doctype html><meta charset=utf-8><title>How good it sounds</title><style>{STYLE}</style>",
             "<h1>How good it sounds</h1><dl>"]
    parts += [f"<dt><b>{html.escape(title)}</b><dd>{html.escape(text)}" for title, text, _ in COLUMNS if text]
    parts.append("</dl>")
    for corpus, models, rows in results:
        parts.append(f"<h2>{html.escape(corpus.name)}</h2><table><tr>")
        parts += [f"<th>{title}" for title, _ in MODEL_COLUMNS]
        for model in models:
            parts.append("<tr>" + "".join(f"<td>{show(model)}" for _, show in MODEL_COLUMNS))
        parts.append("</table><table><tr>" + "".join(f"<th>{title}" for title, _, _ in COLUMNS))
        for row, sounds in rows:
            parts.append("<tr>" + "".join(f"<td>{html.escape(show(row))}" for _, _, show in COLUMNS))
            parts.append(f'<tr class=players><td colspan={len(COLUMNS)}>'
                         + " ".join(player(file) for file in sounds.files[:PLAYERS]))
        parts.append("</table>")
    return "\n".join(parts)


def plain(value):
    return str(value) if isinstance(value, Path) else value


def measure_corpus(product, corpus, options, pool):
    """The models, and a row and its sounds for each set."""
    models = [product.train(corpus, start, quality) for start in options.starts for quality in options.qualities]
    stored = models[0].stored
    originals = {}
    for name, folder in ((HELD, corpus.held), (LEARNED, corpus.learned)):
        output = emptied(corpus.folder / "sets" / name)
        product.check("finish", stored, folder, output)
        originals[name] = measured(name, output, 0, pool)
    reference = Reference(originals[LEARNED], originals[HELD])
    rows = []

    def add(sounds):
        rows.append((reference.row(sounds), sounds))
        print(f"  {sounds.name}: " + ", ".join(f"{title} {show(rows[-1][0])}" for title, _, show in COLUMNS[2:]),
              flush=True)

    for sounds in originals.values():
        add(sounds)
    if options.baselines:
        for sounds in baselines(product, corpus, stored, options, pool):
            add(sounds)
    for model in models:
        for preset in options.presets:
            for detail in options.details:
                folder, seconds = product.generate(corpus, model, preset, detail, options)
                name = f"{model.start}, {model.quality}: {preset}" + (f", detail {detail}" if detail != "0" else "")
                add(measured(name, folder, seconds, pool))
    return models, rows


def parsed():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    words = lambda text: text.split(",")
    parser.add_argument("build", type=Path)
    parser.add_argument("output", type=Path)
    parser.add_argument("corpora", type=Path, nargs="+", metavar="corpus")
    parser.add_argument("--qualities", type=words, default=["quick"])
    parser.add_argument("--starts", type=words, default=["fresh", "head-start"])
    parser.add_argument("--presets", type=words, default=["Faithful", "Balanced", "Explore", "Wild", "Extreme"])
    parser.add_argument("--details", type=words, default=["0", "1"])
    parser.add_argument("--count", type=int, default=48, help="files of each set")
    parser.add_argument("--seed", type=int, default=5, help="of the sets")
    parser.add_argument("--head-start", type=Path, default=Path("Data/HeadStart"), help="its folder")
    parser.add_argument("--no-baselines", dest="baselines", action="store_false")
    return parser.parse_args()


def main():
    options = parsed()
    product = Product(options.build, options.head_start)
    results = []
    with multiprocessing.Pool() as pool:
        for source in options.corpora:
            corpus = divided(source, options.output)
            print(corpus.name, flush=True)
            results.append((corpus, *measure_corpus(product, corpus, options, pool)))
            # After each corpus: a run takes long and may be ended.
            (options.output / "sound.html").write_text(page(results))
            (options.output / "sound.md").write_text(markdown(results))
    figures = [{"corpus": corpus.name, "models": [dataclasses.asdict(model) for model in models],
                "sets": [row for row, _ in rows]} for corpus, models, rows in results]
    (options.output / "sound.json").write_text(json.dumps(figures, indent=1, default=plain))
    print(f"Wrote {options.output}/sound.html, sound.md and sound.json")


if __name__ == "__main__":
    main()
