// The log as it is read: sets with what came of them, on demand everything else that happened.

const OF_SETS = ["set", "ignored set", "answer", "no answer"];

/** Whether an event of the log is a set, or an answer to one. */
export function isOfSet({ event }) {
  return OF_SETS.includes(event);
}

function isAnswer({ event }) {
  return event === "answer" || event === "no answer";
}

/** The newest entries, at most that many, newest first: [{event, answers}], answers being those to the event's set. */
export function entries(log, { all, most }) {
  const answers = new Map();
  for (const event of log.filter(isAnswer)) {
    answers.set(event.set, [...(answers.get(event.set) ?? []), event]);
  }
  return log
    .filter((event) => !isAnswer(event) && (isOfSet(event) || all))
    .slice(-most)
    .reverse()
    .map((event) => ({ event, answers: event.event === "set" ? (answers.get(event.set) ?? []) : [] }));
}

/** An event that is no set, in words. */
export function textOf(event) {
  switch (event.event) {
    case "message":
      return `${event.message} ${event.ok ? "is received again" : "timed out"}`;
    case "reverse":
      return `reverse ${event.engaged ? "engaged" : "released"}`;
    case "service":
      return `service ${event.up ? "up" : "down"}`;
    case "fault":
      return `${event.of} ${event.fault}${event.seconds === undefined ? "" : ` ${event.seconds} s`}`;
    default:
      return event.text;
  }
}
