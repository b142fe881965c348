// The first microphone, when the page holds it.

import {bytesOf} from './data.js';

export class Sound {
  constructor(run, button, onTime) {
    this.element = document.getElementById('sound');
    this.start = run.audioStart;
    this.onTime = onTime;
    this.button = button;
    this.wanted = null;
    if (!this.element) return;
    button.hidden = false;
    document.getElementById('space-key').hidden = false;
    button.addEventListener('click', () => this.toggle());
  }

  isThere() {
    return Boolean(this.element);
  }

  // Decoding an hour takes a moment: not before it is asked for.
  load() {
    if (this.audio) return;
    this.audio = new Audio();
    const bytes = bytesOf(this.element);
    this.audio.src = URL.createObjectURL(new Blob([bytes], {type: 'audio/ogg'}));
    this.audio.addEventListener('play', () => this.follow());
    for (const name of ['play', 'pause', 'ended']) {
      this.audio.addEventListener(name, () => {
        this.button.textContent = this.audio.paused ? 'Play' : 'Pause';
      });
    }
  }

  seek(time) {
    this.wanted = Math.max(0, time - this.start);
    if (this.audio) this.audio.currentTime = this.wanted;
  }

  toggle() {
    if (!this.isThere()) return;
    this.load();
    if (!this.audio.paused) {
      this.audio.pause();
      return;
    }
    if (this.wanted !== null) this.audio.currentTime = this.wanted;
    this.wanted = null;
    this.audio.play().catch(() => {
      this.button.textContent = 'Cannot play';
    });
  }

  follow() {
    if (this.audio.paused) return;
    this.onTime(this.start + this.audio.currentTime);
    requestAnimationFrame(() => this.follow());
  }
}
