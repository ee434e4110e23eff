"""What scripts/bench does: measure, count, judge and report."""
