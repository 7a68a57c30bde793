"""A folder of sounds and a model of it, learned once: a few steps, for nobody listens."""
import os
import shutil
from pathlib import Path

import pytest

import quillmere

NAMES = ("aac-mono.caf", "cbr-mono.mp3", "flac16-mono.flac", "float32-stereo.wav", "ima4-mono.aifc")


@pytest.fixture(scope="session")
def folder(tmp_path_factory) -> Path:
    place = tmp_path_factory.mktemp("corpus") / "Sounds"
    place.mkdir()
    for name in NAMES:
        shutil.copy(Path(os.environ["QUILLMERE_TEST_SOUNDS"]) / name, place)
    return place


@pytest.fixture(scope="session")
def corpus(folder) -> quillmere.Corpus:
    return quillmere.scan(folder)


@pytest.fixture(scope="session")
def model(corpus) -> quillmere.Model:
    return quillmere.train(corpus, steps=3, device="cpu")


@pytest.fixture(scope="session")
def generator(model) -> quillmere.Generator:
    return quillmere.Generator(model, device="cpu")
