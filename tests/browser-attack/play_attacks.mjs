// What the page of a stranger can try against corvane-play, also when it knows what it should not.
// Each function runs in that page and gives what came of it.

/** Takes the bridge, and has the server write a file. */
export function bridgeAttack({bridge, file}) {
  return new Promise((resolve) => {
    const socket = new WebSocket(bridge);
    socket.onopen = () => socket.send(`write\n${file}\nattacked\0`);
    socket.onmessage = () => resolve("answered");
    socket.onclose = () => resolve("closed");
  });
}

/** Reads the page as far as the browser lets it. */
export async function readAttack({address}) {
  const read = await fetch(address).then((response) => response.text(), () => "");
  return read === "" ? "closed" : "answered";
}

/** Runs the script that tells the page its token. */
export function scriptAttack({settings}) {
  window.corvanePlay = null;
  return new Promise((resolve) => {
    const script = document.createElement("script");
    script.onload = () => resolve(window.corvanePlay === null ? "closed" : "answered");
    script.onerror = () => resolve("closed");
    script.src = settings;
    document.head.append(script);
  });
}

/** Shows the page in a frame, for clicks that the user does not mean. */
export function frameAttack({address}) {
  const frame = document.createElement("iframe");
  frame.src = address;
  document.body.append(frame);
  return new Promise((resolve) => {
    // What the browser shows instead of a page that it may not frame is out of reach as well: the
    // test looks at what the frame holds.
    frame.onload = () => resolve("loaded");
  });
}

/** Sends a form, as text and as the browser does it. */
export function formAttack({address, file}) {
  const sent = ["text/plain", "application/x-www-form-urlencoded"].map((enctype, index) => {
    const form = document.createElement("form");
    const frame = document.createElement("iframe");
    const field = document.createElement("textarea");
    frame.name = `reply${index}`;
    Object.assign(form, {method: "POST", enctype, target: frame.name, action: address});
    field.name = `\x01write\n${file}\nattacked`;
    field.value = "\x01";
    form.append(field);
    document.body.append(frame, form);
    const loaded = new Promise((resolve) => { frame.onload = resolve; });
    form.submit();
    return loaded;
  });
  return Promise.all(sent).then(() => "closed");
}
