"""Images, latent vectors, sounds and files."""
import signal
import wave

import numpy as np
import pytest

import quillmere


def test_decoding_and_encoding_keep_their_shapes(generator, model):
    config = generator.config
    images = generator.decode(model.latents)
    assert images.shape == (5, config.n_mels, config.frames) and images.dtype == np.float32
    assert generator.encode(images).shape == (5, config.latent_dim)
    assert generator.decode(np.empty((0, config.latent_dim), np.float32)).shape == (0, config.n_mels, config.frames)


def test_more_than_a_batch_is_decoded_in_order(generator, model):
    many = np.tile(model.latents, (4, 1))
    np.testing.assert_array_equal(generator.decode(many)[15:], generator.decode(model.latents))


def test_features_of_silence_are_the_floor(generator):
    image = generator.features(np.zeros(1000))
    assert image.shape == (generator.config.n_mels, generator.config.frames)
    np.testing.assert_allclose(image, -1, atol=1e-6)


def test_latents_are_those_of_the_learned_files(generator, model, folder):
    samples, rate = quillmere.read_mono(folder / "flac16-mono.flac")
    assert rate > 0 and samples.ndim == 1
    assert np.isfinite(generator.encode(generator.features(samples)[np.newaxis])).all()


def test_rendering_a_drawn_image_is_the_audition(generator):
    wild = quillmere.Aesthetics.preset("Wild")
    heard = generator.audition(aesthetics=wild, seed=9)
    assert heard.dtype == np.float32 and heard.size > 0 and np.abs(heard).max() <= 1
    np.testing.assert_array_equal(heard, generator.audition(aesthetics=wild, seed=9))
    image = generator.decode(generator.draw(aesthetics=wild, seed=9)[np.newaxis])[0]
    assert generator.render(image, aesthetics=wild, seed=9).size > 0


def test_rendering_leaves_what_it_is_given(generator, model):
    image = generator.decode(model.latents[:1])[0]
    before = image.copy()
    generator.render(image)
    np.testing.assert_array_equal(image, before)


def test_arrays_of_other_kinds_are_converted(generator, model):
    image = generator.decode(model.latents[:1])[0]
    expected = generator.render(image)
    np.testing.assert_array_equal(generator.render(np.asfortranarray(image)), expected)
    np.testing.assert_array_equal(generator.render(image.astype(np.float64)), expected)


@pytest.mark.parametrize("call", [
    lambda generator: generator.decode(np.zeros(64, np.float32)),
    lambda generator: generator.decode(np.zeros((1, 63), np.float32)),
    lambda generator: generator.encode(np.zeros((1, 2, 3), np.float32)),
    lambda generator: generator.render(np.zeros((2, 3), np.float32)),
    lambda generator: generator.features(np.zeros((2, 3), np.float32)),
])
def test_another_shape_is_a_value_error(generator, call):
    with pytest.raises(ValueError, match="shape"):
        call(generator)


def test_files_are_written_and_told_of(generator, tmp_path):
    heard = []
    samples = generator.generate(tmp_path / "New", count=3, seed=5, format="wav16",
                                 progress=lambda done, total: heard.append((done, total)))
    assert heard == [(1, 3), (2, 3), (3, 3)]
    assert sorted(sample.path.name for sample in samples) == [f"Sounds_var_000{n}.wav" for n in (1, 2, 3)]
    first = min(samples, key=lambda sample: sample.index)
    assert sum(source.weight for source in first.sources) == pytest.approx(1)
    assert not first.latent.flags.writeable
    with wave.open(str(first.path)) as file:
        assert file.getsampwidth() == 2 and file.getframerate() == generator.sample_rate
        assert file.getnframes() / file.getframerate() == pytest.approx(first.seconds)


def test_a_file_can_be_heard_again_by_its_seed(generator, tmp_path):
    sample, = generator.generate(tmp_path, count=1, seed=5, format="wav32float")
    written, _ = quillmere.read_mono(sample.path)
    np.testing.assert_array_equal(written, generator.audition(seed=sample.seed))


def test_detail_comes_from_the_folder_or_from_noise(model, corpus, tmp_path):
    with_sounds = quillmere.Generator(model, device="cpu", corpus=corpus)
    sample, = with_sounds.generate(tmp_path / "a", count=1, detail=1)
    assert sample.detail_basis == "sources"
    sample, = quillmere.Generator(model, device="cpu").generate(tmp_path / "b", count=1, detail=1)
    assert sample.detail_basis == "noise"


def test_ctrl_c_ends_the_job_and_leaves_the_files(generator, tmp_path):
    def interrupt(done, total):
        if done == 1:
            signal.raise_signal(signal.SIGINT)

    with pytest.raises(KeyboardInterrupt):
        generator.generate(tmp_path, count=100_000, progress=interrupt)
    written = list(tmp_path.iterdir())
    assert 0 < len(written) < 100_000 and all(file.suffix == ".wav" for file in written)


@pytest.mark.parametrize("keywords", [{"format": "mp3"}, {"first": -1}])
def test_what_cannot_be_is_a_value_error(generator, tmp_path, keywords):
    with pytest.raises(ValueError):
        generator.generate(tmp_path, **keywords)


def test_detail_beyond_its_range_is_a_failure(generator, tmp_path):
    with pytest.raises(quillmere.InvalidParameterError):
        generator.generate(tmp_path, count=1, detail=2)


def test_written_samples_can_be_read_again(tmp_path):
    samples = np.linspace(-1, 1, 100, dtype=np.float32)
    quillmere.write(tmp_path / "ramp.wav", samples, 8000, "wav32float")
    read, rate = quillmere.read_mono(tmp_path / "ramp.wav")
    np.testing.assert_array_equal(read, samples)
    assert rate == 8000
    with pytest.raises(quillmere.AudioError):
        quillmere.read_mono(tmp_path / "no.wav")


def test_parameters_keep_their_ranges():
    aesthetics = quillmere.Aesthetics(pitch=-5, phase_iterations=10)
    assert (aesthetics.pitch, aesthetics.phase_iterations, aesthetics.contrast) == (-5, 10, 1)
    aesthetics.contrast = 2
    assert eval(repr(aesthetics), vars(quillmere)) == aesthetics != quillmere.Aesthetics()
    for value in (1e9, float("nan")):
        with pytest.raises(ValueError, match="pitch"):
            aesthetics.pitch = value
    with pytest.raises(TypeError):
        quillmere.Aesthetics(pich=1)


def test_presets_and_parameters_are_listed():
    assert len(quillmere.parameters()) == 20 and len(quillmere.presets()) == 8
    wild = quillmere.Aesthetics.preset("wild", pitch=3)
    assert set(wild.values()) == {parameter.name for parameter in quillmere.parameters()}
    assert wild.pitch == 3 and wild != quillmere.Aesthetics.preset("Wild")
    with pytest.raises(ValueError):
        quillmere.Aesthetics.preset("Tame")
