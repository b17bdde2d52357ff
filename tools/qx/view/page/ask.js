// What the page asks of the command that serves it.

/** What a frame or a request could not be had for; `stamp` tells of which files. */
export class Fault extends Error {
  constructor(words, status, stamp) {
    super(words);
    this.status = status;
    this.stamp = stamp;
  }
}

async function ask(place, values) {
  const answer = await fetch(`${place}?${new URLSearchParams(values)}`, {cache: "no-store"});
  if (answer.ok) return answer;
  const told = await answer.json().catch(() => ({}));
  throw new Fault(told.fault ?? `${place}: status ${answer.status}`, answer.status, told.stamp);
}

/** The sources, and the stamps of frames "SOURCE:FRAME". */
export async function askState(shown) {
  return (await ask("state", {shown: shown.join(",")})).json();
}

/** A frame with its pixels as a bitmap. */
export async function askFrame(side, of) {
  const answer = await ask("frame", {side, of});
  const facts = JSON.parse(answer.headers.get("QX-Frame"));
  return {...facts, of, bitmap: await createImageBitmap(await answer.blob())};
}

/** Alpha, red, green and blue of a pixel, as the frame has them. */
export async function askValues(id, x, y) {
  return (await ask("values", {id, x, y})).json();
}
