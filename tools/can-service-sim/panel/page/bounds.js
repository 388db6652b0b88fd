// Which of a signal's values the page offers.

const TOLERANCE = 1e-6; // of a quotient that ought to be a whole number

/** What a slider takes: the usual range, of it what the signal can have, in steps from one such value to the next. */
export function sliderBounds(signal) {
  const step = signal.kind.startsWith("float") ? signal.step : Math.max(1, signal.step);
  const bounds = (low, high) => ({
    min: multiple(Math.ceil(Math.max(low, 0) / step - TOLERANCE), step),
    max: multiple(Math.floor(Math.min(high, signal.most) / step + TOLERANCE), step),
    step,
  });
  const usual = bounds(...(signal.range ?? [0, largestNamed(signal)]));
  return usual.min < usual.max ? usual : bounds(0, signal.most);
}

/** The values that have names, and that the signal can have: [[value, name]]. */
export function namedValues({ names, most }) {
  return [...names].filter(([value]) => value >= 0 && value <= most);
}

/** States beside those that have names are few. */
function largestNamed(signal) {
  const named = namedValues(signal).map(([value]) => value);
  return named.length > 0 ? Math.max(...named, 3) : signal.most;
}

/** Without what binary fractions add to it. */
function multiple(count, step) {
  return Number((count * step).toPrecision(12));
}
