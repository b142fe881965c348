// The room from above, as SVG. Shares the names of live.js.
"use strict";

// From above: x, ahead of the array, up the page; y to the left.
function place(azimuth, range) {
  const length = Math.min(range / radarScale, 1.06) * 100, angle = azimuth * Math.PI / 180;
  return {x: -length * Math.sin(angle), y: -length * Math.cos(angle)};
}

function add(parent, name, attributes, content) {
  const element = document.createElementNS(Svg, name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  if (content !== undefined) element.textContent = content;
  parent.append(element);
  return element;
}

function drawRings() {
  const rings = byId("rings");
  rings.replaceChildren();
  add(rings, "path", {class: "sector", d: "M-100 0A100 100 0 0 1 100 0Z"});
  const step = radarScale === 10 ? 2 : 1;
  for (let metres = step; metres <= radarScale; metres += step) {
    const r = metres / radarScale * 100;
    add(rings, "path", {d: `M${-r} 0A${r} ${r} 0 0 1 ${r} 0`});
    add(rings, "text", {x: r, y: 8, "text-anchor": "middle"}, `${metres} m`);
    add(rings, "text", {x: -r, y: 8, "text-anchor": "middle"}, `${metres} m`);
  }
  for (let angle = -90; angle <= 90; angle += 30) {
    const end = place(angle, radarScale);
    add(rings, "line", {x1: 0, y1: 0, x2: end.x, y2: end.y});
    if (Math.abs(angle) === 90) continue;
    const label = (angle > 0 ? "+" : "") + String(angle).replace("-", "−") + "°";
    const anchor = angle === 0 ? "middle" : angle > 0 ? "end" : "start"; // away from the arc
    add(rings, "text", {x: end.x * 1.03, y: end.y * 1.03, "text-anchor": anchor}, label);
  }
  drawMicrophones();
}

// Drawn larger than they are: the array is a few centimetres wide.
function drawMicrophones() {
  const group = byId("microphones");
  group.replaceChildren();
  if (!hello) return;
  const width = Math.max(...hello.microphones.map((at) => Math.abs(at[1])), 0.01);
  for (const [x, y] of hello.microphones) {
    add(group, "circle", {cx: -y / width * 9, cy: -x / width * 9, r: 1.2});
  }
}

function isShown(record) {
  return record[Field.hasEstimate] === 1 && record[Field.azimuth] !== null;
}

function trailOf(now) {
  const since = now[Field.time] - TrailSeconds, trail = [];
  for (let i = records.length - 1; i >= 0 && records[i][Field.time] >= since; --i) {
    if (isShown(records[i]) && bit(records[i][Field.flags], VoiceBit)) trail.push(records[i]);
  }
  return trail;
}

function chooseScale(trail, now) {
  const ranges = trail.map((record) => record[Field.range]);
  if (isShown(now)) ranges.push(now[Field.range]);
  // The ninth in ten: a single wild guess does not zoom out.
  ranges.sort((a, b) => a - b);
  const farthest = ranges.length === 0 ? 0 : ranges[Math.floor((ranges.length - 1) * 0.9)];
  const scale = RadarScales.find((metres) => farthest <= metres * 0.97) || 10;
  if (scale === radarScale) return;
  radarScale = scale;
  drawRings();
}

function drawTrail(trail, now) {
  const group = byId("trail");
  while (group.childNodes.length < trail.length) add(group, "circle", {});
  while (group.childNodes.length > trail.length) group.lastChild.remove();
  trail.forEach((record, i) => {
    const at = place(record[Field.azimuth], record[Field.range]), dot = group.childNodes[i];
    const age = (now[Field.time] - record[Field.time]) / TrailSeconds;
    dot.setAttribute("cx", at.x.toFixed(1));
    dot.setAttribute("cy", at.y.toFixed(1));
    dot.setAttribute("r", (1.9 - 1.1 * age).toFixed(2));
    dot.setAttribute("opacity", (0.75 - 0.65 * age).toFixed(2));
  });
}

function drawTalker(now) {
  const talker = byId("talker"), isHere = isShown(now);
  const talks = bit(now[Field.flags], VoiceBit) === 1;
  talker.setAttribute("class", !isHere ? "hidden" : talks ? "" : "held");
  if (!isHere) {
    byId("radar").setAttribute("aria-label", "No talker yet");
    return;
  }
  const at = place(now[Field.azimuth], now[Field.range]);
  for (const id of ["dot", "halo"]) {
    byId(id).setAttribute("cx", at.x.toFixed(2));
    byId(id).setAttribute("cy", at.y.toFixed(2));
  }
  byId("dot").setAttribute("r", 4);
  const glow = 8 * Math.min(now[Field.quality] / BestQuality, 1);
  byId("halo").setAttribute("r", (4 + glow).toFixed(1));
  const ray = byId("ray");
  ray.setAttribute("x1", 0);
  ray.setAttribute("y1", 0);
  ray.setAttribute("x2", at.x.toFixed(2));
  ray.setAttribute("y2", at.y.toFixed(2));
  const who = talks ? "A talker" : "Nobody talks; the last talker was";
  byId("radar").setAttribute("aria-label", `${who} at ` +
    `${Math.round(now[Field.azimuth])} degrees, ${now[Field.range].toFixed(1)} metres`);
}
