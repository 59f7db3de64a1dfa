"""Fewer things that still fail: delta debugging."""


def parts_of(items, count):
    """The items in so many parts, as even as can be."""
    bounds = [len(items) * i // count for i in range(count + 1)]
    return [items[begin:end] for begin, end in zip(bounds, bounds[1:])]


def smallest(items, fails):
    """Items of which each one is needed: fails(them) is true, and without any of them it is not.

    It must be true for all the items. Halves are left out first, then smaller and smaller parts.
    """
    if not items or fails([]):
        return []
    count = 2
    while len(items) > 1:
        for part in parts_of(items, count):
            rest = [item for item in items if item not in part]
            if part and rest and fails(rest):
                items, count = rest, max(count - 1, 2)
                break
        else:
            if count >= len(items):
                break
            count = min(2 * count, len(items))
    return items
