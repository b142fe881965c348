// What pointers and keys do to the view and the cursor.

// Fingers: one moves the cursor along, two zoom and pan.
function followFingers(over, plot, act) {
  const fingers = new Map();
  let before = null;
  const spread = () => {
    const xs = [...fingers.values()];
    return {middle: (xs[0] + xs[1]) / 2, apart: Math.max(20, Math.abs(xs[0] - xs[1]))};
  };
  over.addEventListener('pointerdown', (event) => {
    if (event.pointerType === 'mouse') return;
    fingers.set(event.pointerId, event.clientX);
    before = fingers.size === 2 ? spread() : null;
    if (fingers.size === 1) act.pointAt(plot, event);
  });
  over.addEventListener('pointermove', (event) => {
    if (!fingers.has(event.pointerId)) return;
    fingers.set(event.pointerId, event.clientX);
    if (fingers.size === 1) act.pointAt(plot, event);
    if (fingers.size !== 2 || !before) return;
    const now = spread();
    const left = over.getBoundingClientRect().left;
    act.zoom(before.apart / now.apart, plot.posToVal(now.middle - left, 'x'));
    act.pan(((before.middle - now.middle) / over.clientWidth) * act.width());
    before = now;
  });
  for (const name of ['pointerup', 'pointercancel']) {
    over.addEventListener(name, (event) => {
      fingers.delete(event.pointerId);
      before = null;
    });
  }
}

function followWheel(over, plot, act) {
  over.addEventListener(
    'wheel',
    (event) => {
      const isAcross = event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY);
      if (!event.ctrlKey && !event.metaKey && !isAcross) return; // that scrolls the page
      event.preventDefault();
      const delta = event.deltaMode === 1 ? 20 : 1;
      if (event.ctrlKey || event.metaKey) {
        const step = Math.max(-100, Math.min(100, delta * event.deltaY));
        act.zoom(Math.exp(step * 0.004), plot.posToVal(event.offsetX, 'x'));
      } else {
        const pixels = delta * (event.deltaX || event.deltaY);
        act.pan((pixels / over.clientWidth) * act.width());
      }
    },
    {passive: false},
  );
}

export function followPointers(plot, act) {
  followFingers(plot.over, plot, act);
  followWheel(plot.over, plot, act);
}

// With shift a drag moves the view; without, uPlot selects.
export function panOrSelect(act) {
  return (plot, target, select) => (event) => {
    if (!event.shiftKey) return select(event);
    let before = event.clientX;
    const move = (moved) => {
      act.pan(((before - moved.clientX) / plot.over.clientWidth) * act.width());
      before = moved.clientX;
    };
    addEventListener('mousemove', move);
    addEventListener('mouseup', () => removeEventListener('mousemove', move), {once: true});
    return null;
  };
}

export function followKeys(act) {
  addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const isControl = event.target.closest?.('button, input');
    const keys = {
      ArrowLeft: () => (event.shiftKey ? act.pan(-act.width() / 4) : act.step(-1)),
      ArrowRight: () => (event.shiftKey ? act.pan(act.width() / 4) : act.step(1)),
      '+': () => act.zoom(0.5),
      '=': () => act.zoom(0.5),
      '-': () => act.zoom(2),
      Home: () => act.all(),
      d: () => act.theme(),
      D: () => act.theme(),
      // A button under the focus takes the space itself.
      ' ': isControl ? null : () => act.play(),
    };
    const action = keys[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  });
}
