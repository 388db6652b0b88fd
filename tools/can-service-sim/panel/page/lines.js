// Lines for the simulator: each thing that is turned here is one line of a trace, or a command.

const toast = document.querySelector("#toast");
let hideToast = 0;

/** Shows a sentence for a while. */
export function tell(text) {
  toast.textContent = text;
  toast.hidden = false;
  clearTimeout(hideToast);
  hideToast = setTimeout(() => (toast.hidden = true), 8000);
}

/** Sends a line. What is wrong with it is shown. Returns whether it was taken. */
export async function send(line) {
  document.querySelector("#sent").textContent = line;
  try {
    const response = await fetch("line", { method: "POST", headers: { "Content-Type": "text/plain" }, body: line });
    if (!response.ok) {
      tell((await response.text()).trim());
    }
    return response.ok;
  } catch {
    tell(`the simulator did not take "${line}"; it cannot be reached`);
    return false;
  }
}

/** Lets a message time out, or be received again. */
export function turnMessage(message) {
  send(`${message.name}!${message.timedOut ? "ok" : "timeout"}`);
}
