// Runs the peers on the instances that emit printed, and prints both sides.
//   node compare.mjs rectangles FILE
//   node compare.mjs boxes FILE SECONDS
import { readFileSync } from 'node:fs';

const lines = (file) => readFileSync(file, 'utf8').trim().split('\n').map((line) => JSON.parse(line));

async function rectangles(file) {
  const { MaxRectsPacker } = await import('maxrects-packer/dist/maxrects-packer.mjs');
  const sets = lines(file);
  const rows = new Map();
  const runPeer = () => {
    const start = performance.now();
    const bins = sets.map(({ side, sizes }) => {
      const packer = new MaxRectsPacker(side, side, 0, { smart: false, pot: false, square: false, allowRotation: true });
      packer.addArray(sizes.map(([width, height]) => ({ width, height })));
      return packer.bins.length;
    });
    return { ms: performance.now() - start, bins };
  };
  const runs = [1, 2, 3, 4, 5].map(runPeer).sort((a, b) => a.ms - b.ms);
  sets.forEach((set, i) => {
    const row = rows.get(set.class) ?? { ours: 0, peer: 0, area: 0 };
    row.ours += set.sheets;
    row.peer += runs[2].bins[i];
    row.area += Math.ceil(set.sizes.reduce((sum, [w, h]) => sum + w * h, 0) / set.side ** 2);
    rows.set(set.class, row);
  });
  let [ours, peer, area] = [0, 0, 0];
  for (const [name, row] of rows) {
    console.log(`class ${name}: ours ${row.ours}, peer ${row.peer}, area ${row.area}`);
    ours += row.ours; peer += row.peer; area += row.area;
  }
  const ms = sets.reduce((sum, set) => sum + set.ms, 0);
  console.log(`all: ours ${ours} in ${ms.toFixed(1)} ms, peer ${peer} in ${runs[2].ms.toFixed(1)} ms, area ${area}`);
}

/// Pairwise disjunctions; the peer is told how many bins our first packing by layers takes.
async function solvePeer({ side, boxes, start: bins }, seconds) {
  const { CpModel, CpSolver } = await import('or-tools-wasm/cp-sat');
  const model = new CpModel();
  const volume = boxes.reduce((sum, [w, h, d]) => sum + w * h * d, 0);
  const used = model.newIntVar(Math.ceil(volume / side ** 3), bins, 'used');
  const at = boxes.map((box, i) => box.map((size, axis) => model.newIntVar(0, side - size, `p${i}_${axis}`)));
  const inBin = boxes.map((_, i) => Array.from({ length: bins }, (_, b) => model.newBoolVar(`b${i}_${b}`)));
  inBin.forEach((row, i) => {
    model.addExactlyOne(row);
    row.forEach((literal, b) => {
      if (b > i) model.addLinearConstraint(literal, 0, 0);
      model.addLinearConstraint(used, b + 1, bins).onlyEnforceIf(literal);
    });
  });
  for (let i = 0; i < boxes.length; i++) {
    for (let j = i + 1; j < boxes.length; j++) {
      const apart = [];
      for (let axis = 0; axis < 3; axis++) {
        for (const [a, b] of [[i, j], [j, i]]) {
          if (boxes[a][axis] + boxes[b][axis] > side) continue;
          const literal = model.newBoolVar(`r${a}_${b}_${axis}`);
          model.addLinearConstraint(at[b][axis].minus(at[a][axis]), boxes[a][axis], side).onlyEnforceIf(literal);
          apart.push(literal);
        }
      }
      for (let b = 0; b < bins; b++) model.addBoolOr([...apart, inBin[i][b].not(), inBin[j][b].not()]);
    }
  }
  model.minimize(used);
  const solver = new CpSolver();
  const begun = performance.now();
  const status = await solver.solve(model, { maxTimeInSeconds: seconds, numSearchWorkers: 2 });
  const name = solver.statusName(status);
  const found = name === 'OPTIMAL' || name === 'FEASIBLE';
  return { ms: performance.now() - begun, solved: name === 'OPTIMAL', ub: found ? solver.objectiveValue() : null };
}

const median = (values) => values.sort((a, b) => a - b)[Math.floor(values.length / 2)].toFixed(1);

async function boxes(file, seconds) {
  const rows = new Map();
  for (const set of lines(file)) {
    const peer = await solvePeer(set, seconds);
    const own = set.general.lb === set.general.ub;
    const key = `n ${set.n}`;
    const row = rows.get(key) ?? { all: 0, ours: 0, robot: 0, peer: 0, oursMs: [], robotMs: [], peerMs: [], worse: 0 };
    row.all++; row.ours += own; row.robot += set.robot.lb === set.robot.ub; row.peer += peer.solved;
    row.oursMs.push(set.general.ms); row.robotMs.push(set.robot.ms); row.peerMs.push(peer.ms);
    if (peer.ub !== null && peer.ub < set.general.ub) row.worse++;
    if (own && peer.solved && peer.ub !== set.general.ub) console.log('DISAGREEMENT', JSON.stringify(set), peer);
    rows.set(key, row);
    console.log(`class ${set.class} n ${set.n} no ${set.number}: ours ${set.general.lb}..${set.general.ub} ${set.general.ms.toFixed(1)} ms, `
      + `robot ${set.robot.lb}..${set.robot.ub} ${set.robot.ms.toFixed(1)} ms, peer ${peer.solved ? 'proven' : 'open'} ${peer.ub} ${peer.ms.toFixed(0)} ms`);
  }
  for (const [key, row] of rows)
    console.log(`${key}: proven ours ${row.ours}, robot ${row.robot}, peer ${row.peer} of ${row.all}; median ms ours `
      + `${median(row.oursMs)}, robot ${median(row.robotMs)}, peer ${median(row.peerMs)}; peer better ${row.worse}`);
}

const [, , what, file, seconds] = process.argv;
await (what === 'rectangles' ? rectangles(file) : boxes(file, Number(seconds)));
process.exit(0);
