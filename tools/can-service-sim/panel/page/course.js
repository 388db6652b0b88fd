// The course of a signal in the last minute, as a line.

import { SAMPLES } from "./model.js";

const MARGIN = { x: 2, y: 3 };

/**
 * The points of it: the newest at the right, the lowest value at the bottom; one that follows another is joined to it.
 * Values that are null leave a gap.
 */
export function coursePoints(values, { width, height }) {
  const { low, high } = extremes(values);
  const stepX = (width - 2 * MARGIN.x) / (SAMPLES - 1);
  const points = [];
  values.forEach((value, index) => {
    if (value !== null) {
      const share = high > low ? (value - low) / (high - low) : 0;
      points.push({
        x: width - MARGIN.x - (values.length - 1 - index) * stepX,
        y: height - MARGIN.y - share * (height - 2 * MARGIN.y),
        joined: index > 0 && values[index - 1] !== null,
      });
    }
  });
  return points;
}

/** The lowest and the highest value, undefined where there is none. */
export function extremes(values) {
  const numbers = values.filter((value) => value !== null);
  return numbers.length === 0 ? {} : { low: Math.min(...numbers), high: Math.max(...numbers) };
}

export function hasMoved({ history, value }) {
  return history.some((before) => before !== value);
}
