// What is told beside the frame: faults, notes, and how it stands.

const PLACE = /(: |^)(\/[\w$./-]*)( \([^)]*\))? /;  // in a scene, such as /layers/2/mode (sky)

/** A line with the place in the scene marked. */
function line(words) {
  const paragraph = document.createElement("p");
  const found = PLACE.exec(words);
  if (found === null) {
    paragraph.textContent = words;
    return paragraph;
  }
  const place = document.createElement("span");
  place.className = "place";
  place.textContent = found[2] + (found[3] ?? "");
  const begin = found.index + found[1].length;
  paragraph.append(words.slice(0, begin), place, words.slice(begin + place.textContent.length));
  return paragraph;
}

/** Leaves alone what is told already, so that it is not read out again. */
function isTold(place, words) {
  const told = JSON.stringify(words);
  if (place.dataset.told === told) return true;
  place.dataset.told = told;
  return false;
}

export function showFaults(place, faults) {
  if (isTold(place, faults)) return;
  place.hidden = faults.length === 0;
  if (faults.length === 0) return place.replaceChildren();
  const head = document.createElement("h2");
  head.textContent = faults.length === 1 ? "This is wrong" : `${faults.length} things are wrong`;
  place.replaceChildren(head, ...faults.map(line));
}

export function showNotes(place, notes) {
  if (isTold(place, notes)) return;
  place.hidden = notes.length === 0;
  place.querySelector("summary").textContent = notes.length === 1 ? "1 note" : `${notes.length} notes`;
  place.querySelector("ul").replaceChildren(...notes.map((note) => {
    const item = document.createElement("li");
    item.textContent = note;
    return item;
  }));
}

export function showStatus(place, {reached, busy, faults}) {
  const [kind, words] = !reached ? ["fault", "qx view has ended"]
    : faults > 0 ? ["fault", "Not as it should be"]
    : busy ? ["busy", "Making the frame"] : ["fine", "As saved"];
  if (place.textContent !== words) place.textContent = words;
  place.dataset.kind = kind;
}
