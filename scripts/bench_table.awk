# What the tables of the benchmarks have in common: turns JSON lines into rows of medians, with what is to be reached. The
# exit code is 1 when a bar is missed or has nothing to measure it by. Goes after the file that has the bars and the rows.

function value(name,    text) {
  if (!match($0, "\"" name "\":\"?[^,\"}]*")) { return "" }
  text = substr($0, RSTART, RLENGTH)
  sub(/^"[^"]*":"?/, "", text)
  return text
}

# The bar of a case: "<=" or ">=" and a number.
function bar_of(name) { return name in bars ? bars[name] : "" }

function verdict(name, figure,    bar, limit, reached) {
  bar = bar_of(name)
  if (bar == "") { return "" }
  seen[name] = 1
  limit = substr(bar, 3) + 0
  reached = substr(bar, 1, 2) == "<=" ? figure <= limit : figure >= limit
  if (!reached) { missed++ }
  return bar (reached ? "  reached" : "  MISSED")
}

function row(name, ours, other, figure, allocations) {
  printf "%-46s %12s %12s %9s %8s  %s\n", name, ours, other, figure, allocations, verdict(name, figure + 0)
}

function header(other) {
  printf "%-46s %12s %12s %9s %8s  %s\n", "case", "ns", other, "ratio", "allocs", "to reach"
}

END {
  for (name in bars) {
    if (!(name in seen)) {
      print "not measured: " name
      missed++
    }
  }
  exit missed > 0
}
