#!/usr/bin/env python3
"""Writes the audio files of Tests/Data/Audio.

Needs the ffmpeg program (5.1 or newer, with libmp3lame). The signals are formulas which
Tests/QuillmereCore/Audio/AudioFormatsTest.cpp evaluates again, so the tests know every sample. The files
are committed; run this only to add one.

    scripts/make-audio-fixtures.py [FOLDER]
"""

import math
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

FOLDER = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent / "Tests/Data/Audio")

# Integer ramps that speed up and wrap around: every bit moves, and prediction works at first and fails later.
RAMP_FRAMES = 1003
RAMP_RATE = 22050

# Three packets of ALAC, the last of which is shorter.
PACKETS_FRAMES = 2 * 4096 + 100

# A swept sine with a soft beginning and end, for codecs that keep what is heard and not the samples.
SWEEP_FRAMES = 8011
SWEEP_RATE = 44100


def ramp(index, channel, bits):
    quadratic = (1 << bits) // 676 | 1
    linear = (1 << bits) // 64 | 1
    code = index * index * quadratic + index * linear * (channel + 1)
    return code % (1 << bits) - (1 << (bits - 1))


def sweep(index, channel):
    t = index / SWEEP_RATE
    envelope = math.sin(math.pi * (index + 0.5) / SWEEP_FRAMES) ** 2
    return 0.6 * envelope * math.sin(2 * math.pi * (300 * (channel + 1) * t + 2500 * t * t))


def packed(codes, bits):
    """Raw samples as ffmpeg takes them, with the name of their format."""
    if bits == 8:
        return "u8", bytes(code + 128 for code in codes)
    if bits == 16:
        return "s16le", struct.pack(f"<{len(codes)}h", *codes)
    if bits == 24:
        return "s32le", struct.pack(f"<{len(codes)}i", *(code * 256 for code in codes))
    return "s32le", struct.pack(f"<{len(codes)}i", *codes)


def ramps(channels, bits, frames=RAMP_FRAMES):
    return packed([ramp(i, c, bits) for i in range(frames) for c in range(channels)], bits)


def float_ramps(channels):
    values = [ramp(i, c, 24) / (1 << 23) for i in range(RAMP_FRAMES) for c in range(channels)]
    return "f32le", struct.pack(f"<{len(values)}f", *values)


def sweeps(channels):
    codes = [round(sweep(i, c) * 32767) for i in range(SWEEP_FRAMES) for c in range(channels)]
    return packed(codes, 16)


def ffmpeg(arguments, source=b""):
    command = ["ffmpeg", "-nostdin", "-v", "error", "-y"] + arguments
    if source:
        command.remove("-nostdin")
    return subprocess.run(command, input=source, stdout=subprocess.PIPE, check=True).stdout


def encode(name, raw, rate, channels, arguments, picture=None):
    kind, data = raw
    inputs = ["-f", kind, "-ar", str(rate), "-ac", str(channels), "-i", "pipe:0"]
    if picture:
        inputs += ["-i", str(picture), "-map", "0", "-map", "1", "-c:v", "copy"]
    exact = ["-fflags", "+bitexact", "-flags:a", "+bitexact", "-map_metadata", "-1", "-metadata_header_padding", "0"]
    ffmpeg(inputs + exact + arguments.split() + [str(FOLDER / name)], data)


def encode_stream(name, raw, rate, arguments):
    """Through a pipe, so that ffmpeg cannot go back and fill in the length."""
    kind, data = raw
    inputs = ["-f", kind, "-ar", str(rate), "-ac", "1", "-i", "pipe:0", "-fflags", "+bitexact", "-metadata_header_padding", "0"]
    (FOLDER / name).write_bytes(ffmpeg(inputs + arguments.split() + ["pipe:1"], data))


def lossless():
    for name, channels, bits, arguments in [
        ("pcm8-mono.wav", 1, 8, "-c:a pcm_u8"),
        ("pcm16-mono.wav", 1, 16, "-c:a pcm_s16le"),
        ("pcm16-stereo.wave", 2, 16, "-f wav -c:a pcm_s16le"),
        ("pcm16-surround.wav", 6, 16, "-c:a pcm_s16le"),
        ("pcm24-stereo.wav", 2, 24, "-c:a pcm_s24le"),
        ("pcm32-mono.wav", 1, 32, "-c:a pcm_s32le"),
        ("rf64-mono.wav", 1, 16, "-c:a pcm_s16le -rf64 always"),
        ("pcm16-stereo.aif", 2, 16, "-c:a pcm_s16be"),
        ("pcm24-mono.aiff", 1, 24, "-c:a pcm_s24be"),
        ("sowt-mono.aifc", 1, 16, "-f aiff -c:a pcm_s16le"),
        ("flac16-mono.flac", 1, 16, "-c:a flac -sample_fmt s16 -frame_size 128"),
        ("flac16-stereo.flac", 2, 16, "-c:a flac -sample_fmt s16"),
        ("flac24-stereo.flac", 2, 24, "-c:a flac -sample_fmt s32"),
        ("alac16-mono.m4a", 1, 16, "-c:a alac -sample_fmt s16p"),
        ("alac24-stereo.m4a", 2, 24, "-c:a alac -sample_fmt s32p"),
        ("pcm16be-mono.caf", 1, 16, "-c:a pcm_s16be"),
        ("pcm16le-stereo.caf", 2, 16, "-c:a pcm_s16le"),
        ("pcm24-mono.caf", 1, 24, "-c:a pcm_s24le"),
        ("alac16-stereo.caf", 2, 16, "-c:a alac -sample_fmt s16p"),
    ]:
        encode(name, ramps(channels, bits), RAMP_RATE, channels, arguments)
    for name, channels, arguments in [
        ("float32-stereo.wav", 2, "-c:a pcm_f32le"),
        ("float64-mono.wav", 1, "-c:a pcm_f64le"),
        ("float32-mono.aifc", 1, "-f aiff -c:a pcm_f32be"),
        ("float64-stereo.aifc", 2, "-f aiff -c:a pcm_f64be"),
        ("float32-mono.caf", 1, "-c:a pcm_f32le"),
    ]:
        encode(name, float_ramps(channels), RAMP_RATE, channels, arguments)
    for frames in (1, 10):
        for extension, codec in (("wav", "pcm_s16le"), ("aif", "pcm_s16be"), ("flac", "flac")):
            encode(f"frames{frames}-mono.{extension}", ramps(1, 16, frames), RAMP_RATE, 1, f"-c:a {codec}")
    encode("packets-mono.m4a", ramps(1, 16, PACKETS_FRAMES), RAMP_RATE, 1, "-c:a alac -sample_fmt s16p")
    encode_stream("unknown-length-mono.wav", ramps(1, 16), RAMP_RATE, "-c:a pcm_s16le -f wav")
    encode_stream("unknown-length-mono.flac", ramps(1, 16), RAMP_RATE, "-c:a flac -f flac")


    write_pcm_m4a(FOLDER / "pcm16-mono.m4a", 1)
    write_pcm_m4a(FOLDER / "pcm16-stereo.m4a", 2)


def write_pcm_m4a(target, channels):
    """Samples without compression in the way of QuickTime, with the description behind them."""
    _, data = ramps(channels, 16)
    start = atom(b"ftyp", b"M4A \0\0\2\0M4A qt  ")
    description = struct.pack(">6xH8xHHhHI", 1, channels, 16, 0, 0, RAMP_RATE << 16)
    table = b"".join([
        full_atom(b"stsd", struct.pack(">I", 1) + atom(b"sowt", description)),
        full_atom(b"stts", struct.pack(">III", 1, RAMP_FRAMES, 1)),
        full_atom(b"stsc", struct.pack(">IIII", 1, 1, RAMP_FRAMES, 1)),
        full_atom(b"stsz", struct.pack(">II", 2 * channels, RAMP_FRAMES)),
        full_atom(b"stco", struct.pack(">II", 1, len(start) + 8)),
    ])
    reference = full_atom(b"dref", struct.pack(">I", 1) + atom(b"url ", struct.pack(">I", 1)))
    information = full_atom(b"smhd", bytes(4)) + atom(b"dinf", reference) + atom(b"stbl", table)
    media = full_atom(b"mdhd", struct.pack(">IIIIHH", 0, 0, RAMP_RATE, RAMP_FRAMES, 0x55C4, 0))
    media += full_atom(b"hdlr", struct.pack(">I4s12xx", 0, b"soun")) + atom(b"minf", information)
    matrix = struct.pack(">9I", 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
    track = struct.pack(">IIIII", 0, 0, 1, 0, RAMP_FRAMES) + bytes(8) + struct.pack(">HHHH", 0, 0, 256, 0)
    track = atom(b"tkhd", struct.pack(">I", 3) + track + matrix + bytes(8)) + atom(b"mdia", media)
    movie = struct.pack(">IIIIIH10x", 0, 0, RAMP_RATE, RAMP_FRAMES, 0x10000, 256) + matrix + bytes(24)
    movie = full_atom(b"mvhd", movie + struct.pack(">I", 2)) + atom(b"trak", track)
    target.write_bytes(start + atom(b"mdat", data) + atom(b"moov", movie))


def atom(name, data):
    return struct.pack(">I", 8 + len(data)) + name + data


def full_atom(name, data):
    return atom(name, bytes(4) + data)


def lossy(picture):
    for name, channels, arguments in [
        ("alaw-mono.wav", 1, "-c:a pcm_alaw"),
        ("ulaw-stereo.wav", 2, "-c:a pcm_mulaw"),
        ("adpcm-ms-mono.wav", 1, "-c:a adpcm_ms"),
        ("adpcm-ima-mono.wav", 1, "-c:a adpcm_ima_wav"),
        ("mp3-mono.wav", 1, "-c:a libmp3lame -b:a 64k"),
        ("alaw-mono.aifc", 1, "-f aiff -c:a pcm_alaw"),
        ("ima4-mono.aifc", 1, "-f aiff -c:a adpcm_ima_qt"),
        ("ima4-stereo.caf", 2, "-c:a adpcm_ima_qt"),
        ("cbr-mono.mp3", 1, "-c:a libmp3lame -b:a 64k"),
        ("cbr-stereo.mp3", 2, "-c:a libmp3lame -b:a 128k"),
        ("vbr-stereo.mp3", 2, "-c:a libmp3lame -q:a 4"),
        ("cbr-no-xing-mono.mp3", 1, "-c:a libmp3lame -b:a 64k -write_xing 0 -id3v2_version 0"),
        ("vbr-no-xing-mono.mp3", 1, "-c:a libmp3lame -q:a 4 -write_xing 0"),
        ("edit-list-mono.m4a", 1, "-c:a aac -b:a 96k"),
        ("edit-list-stereo.m4a", 2, "-c:a aac -b:a 128k -movflags +faststart"),
        ("no-edit-list-mono.m4a", 1, "-c:a aac -b:a 96k -use_editlist 0"),
        ("fragmented-mono.m4a", 1, "-c:a aac -b:a 96k -movflags frag_keyframe+empty_moov -f mp4"),
        ("adts-mono.aac", 1, "-c:a aac -b:a 96k -f adts"),
        ("adts-stereo.aac", 2, "-c:a aac -b:a 128k -f adts"),
    ]:
        encode(name, sweeps(channels), SWEEP_RATE, channels, arguments)
    cover = "-disposition:v attached_pic"
    encode("cover-mono.mp3", sweeps(1), SWEEP_RATE, 1, "-c:a libmp3lame -b:a 64k -id3v2_version 3", picture)
    encode("cover-mono.m4a", sweeps(1), SWEEP_RATE, 1, f"-c:a aac -b:a 96k {cover}", picture)
    encode("cover-mono.flac", ramps(1, 16), RAMP_RATE, 1, f"-c:a flac {cover}", picture)
    for channels, name in ((1, "mono"), (2, "stereo")):
        write_aac_caf(FOLDER / f"aac-{name}.caf", FOLDER / f"adts-{name}.aac", channels)


def write_aac_caf(target, adts, channels):
    """AAC packets with a packet table, which ffmpeg reads but does not write."""
    packets = adts_packets(adts.read_bytes())
    priming = 1024
    remainder = len(packets) * 1024 - priming - SWEEP_FRAMES
    config = bytes([0x12, 0x08 if channels == 1 else 0x10])  # AudioSpecificConfig: AAC LC at 44100 Hz
    decoder = descriptor(4, bytes([0x40, 0x15, 0, 0, 0]) + struct.pack(">II", 96000, 96000) + descriptor(5, config))
    cookie = descriptor(3, struct.pack(">HB", 0, 0) + decoder + descriptor(6, b"\x02"))
    table = struct.pack(">qqii", len(packets), SWEEP_FRAMES, priming, remainder)
    table += b"".join(variable_length(len(packet)) for packet in packets)
    description = struct.pack(">d4sIIIII", float(SWEEP_RATE), b"aac ", 0, 0, 1024, channels, 0)
    target.write_bytes(b"caff" + struct.pack(">HH", 1, 0) + chunk(b"desc", description) + chunk(b"kuki", cookie)
                       + chunk(b"pakt", table) + chunk(b"data", struct.pack(">I", 0) + b"".join(packets)))


def adts_packets(data):
    packets, at = [], 0
    while at + 7 <= len(data):
        length = (data[at + 3] & 3) << 11 | data[at + 4] << 3 | data[at + 5] >> 5
        header = 7 if data[at + 1] & 1 else 9
        packets.append(data[at + header:at + length])
        at += length
    return packets


def chunk(name, data):
    return name + struct.pack(">q", len(data)) + data


def descriptor(tag, data):
    return bytes([tag, 0x80, 0x80, 0x80, len(data)]) + data


def variable_length(number):
    out = [number & 127]
    while number := number >> 7:
        out.insert(0, number & 127 | 128)
    return bytes(out)


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as work:
        picture = Path(work) / "cover.jpg"
        ffmpeg(["-f", "lavfi", "-i", "color=red:s=16x16", "-frames:v", "1", "-fflags", "+bitexact", str(picture)])
        lossless()
        lossy(picture)


main()
