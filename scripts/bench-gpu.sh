#!/usr/bin/env bash
# Measures the network on a graphics processor: step, encode and decode, the time of every operation of a step, the
# step's time for many tiles, and the same work in PyTorch's CUDA build where that is installed. Everything is
# printed and kept in build/bench-gpu.txt, step, encode and decode also in build/bench-gpu.json.
#
#   scripts/bench-gpu.sh [--quick] [--no-build] [DEVICE]
#
#   --quick     one tiny image size and no tiles: shows within minutes that all of it works, on any driver
#   --no-build  uses what build/release holds already and installs nothing, for a machine without compilers or the
#               Internet; libraries that are not installed there may be carried along in LD_LIBRARY_PATH, a driver's
#               manifest in VK_ICD_FILENAMES
#   DEVICE      as for --device; the first real graphics processor, if none is named
set -euo pipefail
cd "$(dirname "$0")/.."

die() {
    echo "bench-gpu.sh: $*" >&2
    exit 1
}

quick= build=yes device=gpu
for argument; do
    case $argument in
        --quick) quick=yes ;;
        --no-build) build= ;;
        --*) die "unknown option '$argument'; the options are --quick and --no-build" ;;
        *) device=$argument ;;
    esac
done

benchmark=build/release/Benchmarks/QuillmereCore/Network/VulkanBenchmark
profile=build/release/Benchmarks/QuillmereCore/Network/VulkanProfile
cli=build/release/Sources/QuillmereCLI/quillmere-cli

if [[ $build ]]; then
    scripts/setup.sh build test
    cmake --preset release -D QUILLMERE_VULKAN=ON > /dev/null
    cmake --build --preset release --target VulkanBenchmark VulkanProfile quillmere-cli
fi
for program in "$benchmark" "$profile" "$cli"; do
    [[ -x $program ]] || die "$program is missing: build it, here or on a machine like this, without --no-build"
    missing=$(ldd "$program" | awk '/not found/ { print $1 }' | sort -u | xargs)
    [[ -z $missing ]] || die "not installed here: $missing. Install what has them (libvulkan.so.1 is in Debian's" \
        "libvulkan1), or carry the files along and name their folder in LD_LIBRARY_PATH."
done
# Says itself when there is no such device.
"$profile" --device "$device" --mels 32 --frames 32 --batch 1 --steps 1 > /dev/null || {
    "$cli" devices >&2
    die "Vulkan offers no device '$device'. If the card and its driver are there, the driver's manifest may not be:" \
        "see /usr/share/vulkan/icd.d, or name one in VK_ICD_FILENAMES (NVIDIA's is nvidia_icd.json)."
}

measure() {
    "$cli" devices
    printf '\n== Step, encode, decode\n'
    QUILLMERE_BENCHMARK_DEVICE=$device ${quick:+env QUILLMERE_BENCHMARK_QUICK=1} "$benchmark" \
        --benchmark_out=build/bench-gpu.json --benchmark_out_format=json
    local sizes=('96 192' '384 96') work=()
    [[ $quick ]] && sizes=('32 32') work=(--batch 2 --steps 3)
    for size in "${sizes[@]}"; do
        read -r mels frames <<< "$size"
        printf '\n== Operations of a step, %s x %s\n' "$mels" "$frames"
        "$profile" --device "$device" --mels "$mels" --frames "$frames" "${work[@]}"
        printf '\n== Tiles, %s x %s\n' "$mels" "$frames"
        if [[ $quick ]]; then
            echo "Left out by --quick: a software driver takes minutes to compile them."
        else
            "$profile" --device "$device" --mels "$mels" --frames "$frames" --tiles
        fi
    done
    printf '\n== PyTorch\n'
    if python3 -c 'import sys, torch; sys.exit(not torch.cuda.is_available())' 2> /dev/null; then
        python3 Benchmarks/peers/torch_gpu_peer.py ${quick:+--steps 3}
        python3 Benchmarks/peers/torch_gpu_peer.py ${quick:+--steps 3} --tf32
    else
        echo "Skipped: there is no PyTorch with CUDA here."
    fi
}
measure 2>&1 | tee build/bench-gpu.txt
echo
echo "Kept in build/bench-gpu.txt and build/bench-gpu.json"
