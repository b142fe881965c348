// Light and dark: what the system says until the reader chooses.

const root = document.documentElement;
const system = matchMedia('(prefers-color-scheme: dark)');
let chosen = null;
const listeners = [];

try {
  chosen = localStorage.getItem('voxloc-theme');
} catch {
  // A page from a file may have no storage.
}

export function isDark() {
  return root.dataset.theme === 'dark';
}

export function color(name) {
  return getComputedStyle(root).getPropertyValue(`--${name}`).trim();
}

export function onThemeChange(listener) {
  listeners.push(listener);
}

function wanted() {
  return chosen === 'light' || chosen === 'dark' ? chosen : system.matches ? 'dark' : 'light';
}

function apply(theme) {
  root.dataset.theme = theme;
  document.getElementById('theme').textContent = theme === 'dark' ? 'Light' : 'Dark';
  listeners.forEach((listener) => listener());
}

export function toggleTheme() {
  chosen = wanted() === 'dark' ? 'light' : 'dark';
  try {
    localStorage.setItem('voxloc-theme', chosen);
  } catch {
    // Then the choice lasts as long as the page.
  }
  apply(wanted());
}

export function startTheme() {
  apply(wanted());
  document.getElementById('theme').addEventListener('click', toggleTheme);
  system.addEventListener('change', () => apply(wanted()));
  // Paper is light.
  addEventListener('beforeprint', () => apply('light'));
  addEventListener('afterprint', () => apply(wanted()));
}
