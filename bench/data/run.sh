#!/bin/sh
# Medians of five for each kind of work, peers interleaved: bench/data/run.sh build/release/bench/bench_data
set -e
for work in Load FirstSelect FirstQuery Select Query Group SortNumber SortText; do
  "$1" --benchmark_filter="^${work}_" --benchmark_enable_random_interleaving=true --benchmark_repetitions=5 \
    --benchmark_report_aggregates_only=true --benchmark_min_time=0.3 2>/dev/null |
    awk '/_median/ { sub("/manual_time", "", $1); sub("_median", "", $1); printf "%-24s %9.3f %s\n", $1, $2, $3 }'
done
