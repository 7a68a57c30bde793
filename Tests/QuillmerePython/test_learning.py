"""Scanning, training and storing."""
import signal
import threading

import numpy as np
import pytest

import quillmere


def train(corpus, **keywords):
    return quillmere.train(corpus, **{"steps": 2, "device": "cpu", **keywords})


def test_scan_finds_the_files_in_natural_order(corpus):
    assert corpus.files == ["aac-mono.caf", "cbr-mono.mp3", "flac16-mono.flac", "float32-stereo.wav", "ima4-mono.aifc"]
    assert len(corpus) == 5 and corpus.unreadable == 0
    assert corpus.total_seconds == pytest.approx(corpus.durations.sum())
    assert sum(corpus.sample_rates.values()) == 5


def test_scan_tells_how_far_it_is(folder):
    heard = []
    quillmere.scan(folder, progress=lambda done, total: heard.append((done, total)))
    assert heard[0] == (0, 5) and heard[-1] == (5, 5)


def test_what_is_no_folder_is_a_file_error_with_its_sentence(tmp_path):
    with pytest.raises(quillmere.FileError, match="nowhere") as failure:
        quillmere.scan(tmp_path / "nowhere")
    assert isinstance(failure.value, quillmere.Failure)


def test_names_need_not_be_text(tmp_path, folder):
    name = b"kick\xff.wav"
    (tmp_path / "x.wav").write_bytes((folder / "float32-stereo.wav").read_bytes())
    (tmp_path / "x.wav").rename(tmp_path / name.decode(errors="surrogateescape"))
    assert [file.encode(errors="surrogateescape") for file in quillmere.scan(tmp_path).files] == [name]


def test_an_empty_folder_cannot_be_learned(tmp_path):
    with pytest.raises(quillmere.TrainingError, match="No usable audio"):
        train(quillmere.scan(tmp_path))


def test_training_reports_every_phase(corpus):
    reports = []
    model = train(corpus, progress=reports.append)
    assert [phase for i, phase in enumerate(report.phase for report in reports)
            if i == 0 or phase != reports[i - 1].phase] == ["analysing", "training", "finishing"]
    last = [report for report in reports if report.phase == "training"][-1]
    assert (last.step, last.total_steps) == (2, 2)
    assert model.steps == 2 and model.clip_names == corpus.files


def test_a_seed_gives_the_same_model(corpus):
    one, same, other = train(corpus, seed=3), train(corpus, seed=3), train(corpus, seed=4)
    assert one.identity == same.identity != other.identity


def test_what_progress_raises_ends_the_training(corpus):
    class Enough(Exception):
        pass

    def stop(report):
        if report.phase == "training":
            raise Enough

    with pytest.raises(Enough):
        train(corpus, steps=1000, progress=stop)


def test_ctrl_c_ends_the_training(corpus):
    steps = []

    def interrupt(report):
        if report.phase == "training":
            steps.append(report.step)
            if len(steps) == 1:
                signal.raise_signal(signal.SIGINT)

    with pytest.raises(KeyboardInterrupt):
        train(corpus, steps=1_000_000, progress=interrupt)
    assert steps[-1] < 1_000_000


def test_other_threads_go_on_while_it_learns(corpus):
    done = threading.Event()
    ticks = []

    def tick():
        while not done.wait(0.001):
            ticks.append(None)

    thread = threading.Thread(target=tick)
    thread.start()
    train(corpus, steps=20)
    done.set()
    thread.join()
    assert len(ticks) > 5


@pytest.mark.parametrize("keywords", [
    {"quality": "best"}, {"analysis": "slow"}, {"steps": 0}, {"batch_size": 0}, {"latent_dim": 0},
    {"clip_seconds": float("nan")}, {"clip_seconds": 0}, {"learning_rate": float("inf")},
])
def test_what_cannot_be_is_a_value_error(corpus, keywords):
    with pytest.raises(ValueError):
        train(corpus, **keywords)


def test_a_device_that_is_not_there_is_a_device_error(corpus):
    with pytest.raises(quillmere.DeviceError):
        train(corpus, device="no such device")


def test_a_stored_model_is_the_same_when_it_is_opened(corpus, model, tmp_path):
    place = quillmere.model_folder(corpus, tmp_path)
    model.store(place)
    opened = quillmere.open_model(place)
    assert opened.identity == model.identity
    assert opened.config == model.config
    np.testing.assert_array_equal(opened.latents, model.latents)


def test_there_is_no_model_in_an_empty_folder(tmp_path):
    with pytest.raises(quillmere.FileError):
        quillmere.open_model(tmp_path)


def test_weights_are_views_of_the_model(model):
    weights = model.weights
    assert all(not array.flags.writeable and not array.flags.owndata for array in weights.values())
    for name, array in model.weights.items():
        assert np.shares_memory(array, weights[name])
    with pytest.raises(ValueError):
        next(iter(weights.values()))[...] = 0


def test_views_outlive_the_name_of_the_model(corpus):
    model = train(corpus)
    weights = model.weights
    expected = {name: array.copy() for name, array in weights.items()}
    del model
    for name, array in weights.items():
        np.testing.assert_array_equal(array, expected[name])


def test_training_begins_from_the_head_start_or_a_model(corpus, model):
    start = quillmere.head_start()
    assert train(corpus, start=start, steps=1).identity != train(corpus, steps=1).identity
    assert quillmere.TrainingStart(model).name == "Sounds"
