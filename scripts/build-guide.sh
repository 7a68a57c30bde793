#!/usr/bin/env bash
# Builds the guide, docs/guide, as one HTML file with its pictures and as a PDF: build/guide/quillmere-guide.*
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh guide
mkdir -p build/guide
pandoc --defaults docs/guide/guide.yaml --resource-path docs/guide --self-contained \
    --output build/guide/quillmere-guide.html
weasyprint --quiet build/guide/quillmere-guide.html build/guide/quillmere-guide.pdf
ls -sh build/guide
