"""Learns the character of a folder of audio samples and generates new ones.

    import quillmere

    corpus = quillmere.scan("Kicks")
    model = quillmere.train(corpus, quality="quick", progress=lambda report: print(report.message))
    model.store(quillmere.model_folder(corpus))      # where the programs find it

    generator = quillmere.Generator(model)
    generator.generate("New", count=10, aesthetics=quillmere.Aesthetics.preset("Wild", pitch=-5), seed=7)

    image = generator.decode(model.latents[:2].mean(axis=0, keepdims=True))[0]
    samples = generator.render(image, seed=7)        # half-way between the first two files, as a NumPy array
    quillmere.write("between.wav", samples, generator.sample_rate)

Samples are mono, in single precision, nominally within -1 and 1. Images are [n_mels, frames], the lowest band first, -1
for silence and 1 for full level. Arrays that come back are not copied on their way, nor are C-contiguous arrays of single
precision that go in, but for the images and latent vectors of encode and decode. Random numbers come from seeds alone.

Long work leaves other Python threads running, and Ctrl-C ends it with KeyboardInterrupt. What a user can have caused
raises a Failure, whose text is a sentence for people; what is wrong in a call a ValueError or a TypeError.
"""

from os import environ as _environ, PathLike as _PathLike
from pathlib import Path as _Path
from typing import Optional as _Optional, Union as _Union

from . import _core
from ._core import (Aesthetics, AudioError, Corpus, CorruptModelError, DecodingError, DeviceError, Failure, FileError,
                    Generator, InvalidParameterError, Model, ModelBusyError, ModelConfig, Parameter, Sample, Source,
                    TrainingError, TrainingProgress, TrainingStart, __version__, load_head_start, model_folder,
                    open_model, parameters, presets, read_mono, scan, train, write)

__all__ = [
    "Aesthetics", "AudioError", "Corpus", "CorruptModelError", "DecodingError", "DeviceError", "Failure", "FileError",
    "Generator", "InvalidParameterError", "Model", "ModelBusyError", "ModelConfig", "Parameter", "Sample", "Source",
    "TrainingError", "TrainingProgress", "TrainingStart", "__version__", "head_start", "load_head_start",
    "model_folder", "open_model", "parameters", "presets", "read_mono", "scan", "train", "write",
]


def head_start(folder: _Optional[_Union[str, "_PathLike[str]"]] = None) -> TrainingStart:
    """The head start that comes with the package: networks that know thousands of sounds made by rule.

    train(corpus, start=head_start()) learns in a fraction of the steps. folder, or the environment variable
    QUILLMERE_HEAD_START, names another one.
    """
    own = _environ.get("QUILLMERE_HEAD_START") or _Path(__file__).parent / "head-start"
    return load_head_start(folder if folder is not None else own)
